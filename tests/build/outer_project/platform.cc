// The outer project's own platform.
const char* PlatformName() { return "the outer platform"; }
