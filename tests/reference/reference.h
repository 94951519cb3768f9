// What the examples of the headers are written with. Each program here has the
// examples of one header, line for line; a test looks that they are all here.
// They tell by assert what comes out.
#ifndef KORVAN_TESTS_REFERENCE_REFERENCE_H_
#define KORVAN_TESTS_REFERENCE_REFERENCE_H_

#undef NDEBUG
#include <korvan/korvan.h>
#include <korvan/platform/asn1_record.h>
#include <korvan/platform/last_error.h>

#include <cassert>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <sstream>
#include <string>

#endif  // KORVAN_TESTS_REFERENCE_REFERENCE_H_
