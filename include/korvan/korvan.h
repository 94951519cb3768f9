/// @file
/// The whole interface of the library.
#ifndef KORVAN_KORVAN_H_
#define KORVAN_KORVAN_H_

#include <korvan/cryptoapi.h>
#include <korvan/export.h>
#include <korvan/ini_file.h>
#include <korvan/oid_info.h>
#include <korvan/public_key.h>
#include <korvan/string_resources.h>
#include <korvan/text.h>
#include <korvan/version.h>

#endif  // KORVAN_KORVAN_H_
