// A library that uses korvan, at work and when it is destroyed.
#ifndef KORVAN_TESTS_LOAD_USER_LIBRARY_H_
#define KORVAN_TESTS_LOAD_USER_LIBRARY_H_

extern "C" {

int EveryServiceWorksInUserLibrary();

// Where it has these objects of korvan's.
const void* RegistryOfUserLibrary();
const void* NarrowLineFeedOfUserLibrary();
const void* WideLineFeedOfUserLibrary();

// Prints a line: `when`, and what a lookup finds then. Ends the process with
// the status 3 where a service gives a wrong answer.
void PrintWhatIsFound(const char* when);

// Has it do that when the process ends: in a function that it registered with
// atexit when it was loaded, and in the destructor of a static object.
void PrintAtExit();
}

#endif  // KORVAN_TESTS_LOAD_USER_LIBRARY_H_
