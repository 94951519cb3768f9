// The shared object that does nothing: what loading any of them costs.
