// The smallest C++ library, to compare the plug-in's loading with.

extern "C" __attribute__((visibility("default"))) int empty();

int empty() { return 0; }
