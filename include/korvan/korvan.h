/// @file
/// The whole interface of the library `korvan`.
///
/// What a failure leaves behind is read by `GetLastError`, which is not here:
/// it belongs to the process, not to the library. A process that emulates the
/// Windows API declares it in its own headers, and a second declaration might
/// disagree with that one. Programs without a platform of their own link
/// `korvan_platform` and include what is beside:
///
///   - <korvan/platform/last_error.h>: `GetLastError`, `SetLastError`;
///   - <korvan/platform/asn1_record.h>: the ASN.1 record classes that the key
///     conversions use, which few programs need.
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

/// All of the library but what CryptoAPI's programs know by global names: its
/// types and constants, `LoadString_korvan`, and the platform's operations.
namespace korvan {}

#endif  // KORVAN_KORVAN_H_
