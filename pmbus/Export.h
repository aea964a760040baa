// Visibility of what the PMBus module offers to a host.
#pragma once

#define PMBUS_API __attribute__((visibility("default")))
