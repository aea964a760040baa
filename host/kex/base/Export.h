// Visibility of what the host library offers to plug-ins and programs.
#pragma once

#define KEX_API __attribute__((visibility("default")))
