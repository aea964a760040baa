// Marks what the plug-in lets others see; everything else is hidden.
#pragma once

#define EMERSON_EXPORT __attribute__((visibility("default")))
