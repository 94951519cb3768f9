/// @file
/// A certificate's public key to the provider's key blob, and back.
///
/// The blob: `PUBLICKEYSTRUC` with type 0x06 and version 0x20, the four bytes
/// "MAG1", the key's length in bits as a 32-bit number, the algorithm's
/// parameters as they are encoded, the key. Numbers are little-endian. The
/// form is the same for every algorithm; docs/key_blob.md tells it whole.
///
/// Buffers. Output buffers are allocated with `malloc` at exactly their size.
/// The caller owns them and frees them with `free`. AN OUTPUT POINTER
/// THAT IS NOT NULL ON ENTRY IS TAKEN FOR SUCH A BUFFER AND FREED FIRST, so
/// start with null, and pass in no input that stands in the buffer.
///
/// Errors. A failing function returns 0 and sets the thread's last error; one
/// that succeeds returns 1 and leaves the last error alone, but see
/// <korvan/oid_info.h>. Exceptions of the platform's ASN.1 record classes, and
/// `std::bad_alloc` of working memory, pass through: no last error is set then
/// and no output buffer made. The bundled classes need such memory only for a
/// key of more than 512 bytes. What a host's `SetLastError` throws passes, too:
/// the outputs are then what the error leaves that it was to set.
#ifndef KORVAN_PUBLIC_KEY_H_
#define KORVAN_PUBLIC_KEY_H_

#include <korvan/cryptoapi.h>
#include <korvan/export.h>

namespace korvan {

/// Makes a key blob of a certificate's public key.
///
///     unsigned char key[66] = {0x04, 0x40};  // an OCTET STRING of 64 bytes
///     char oid[] = "1.2.643.2.2.19";
///     CERT_PUBLIC_KEY_INFO info = {};
///     info.Algorithm.pszObjId = oid;
///     info.PublicKey = {sizeof(key), key, 0};
///     unsigned char* blob = nullptr;
///     unsigned int size = 0;
///     if (korvan::KRVConvertPublicKeyInfo(0, &info, 0, 0, &blob, &size)) {
///       assert(size == 16 + 64);  // at `blob`, for the provider
///       std::free(blob);
///     }
///
/// The key in the blob is the bit string's content; where that is a primitive
/// OCTET STRING whose content is 2 or 3 bytes shorter, it is the OCTET
/// STRING's content. So the 64-byte GOST R 34.10-2001 key behind `04 40` and
/// the 128-byte key behind `04 81 80` are unwrapped; a key with a longer
/// header, an RSA key, or anything malformed is taken whole, and is no error.
/// The bytes are never reversed, the parameters never looked at. A `bitLen` of
/// 2^32 or more, of a key of 512 MiB, keeps its lower 32 bits.
///
/// @param uUnused1  not read.
/// @param info      the public key info; only read. Must not be null.
///   `Algorithm.pszObjId` is looked up among the public-key algorithms, group
///   3 of the registry; `Algorithm.Parameters` and `PublicKey` must give as
///   many readable bytes as they count, and may be at null when that is 0.
///   `PublicKey.cUnusedBits` is not read.
/// @param uUnused3  not read.
/// @param uUnused4  not read.
/// @param ppBlob    in: null, or the output buffer of an earlier call, which
///                  is freed. Out: the blob, to be freed with `free`;
///                  null on failure. Must not be null, and is not checked.
/// @param pcbBlob   receives the blob's size in bytes; may point to a size in
///                  `info`. Must not be null.
/// @return 1 on success, 0 on failure.
/// @par Errors
/// On failure the last error is
///   - 87, `ERROR_INVALID_PARAMETER`: `info` or `pcbBlob` is null. NOTHING IS
///     FREED OR WRITTEN, `*ppBlob` keeps its buffer;
///   - 0x80090008, `NTE_BAD_ALGID`: the OID is null or no public-key algorithm
///     of the registry. `*ppBlob` is null, `*pcbBlob` unchanged;
///   - 0x8009000E, `NTE_NO_MEMORY`: allocation of the blob fails, or its
///     size does not fit in 32 bits. `*ppBlob` is null, `*pcbBlob` holds the
///     size that could not be allocated, its lower 32 bits where it does not
///     fit.
/// @ownership{The blob is the caller's. Everything else stays whose it was.}
/// @threads{Any thread at any time, as far as it may call `FindOIDInfo`.}
/// @throws std::bad_alloc and what the platform's record classes throw:
///         `*ppBlob` is null then and `*pcbBlob` unchanged.
KORVAN_API int KRVConvertPublicKeyInfo(unsigned int uUnused1,
                                       const _CERT_PUBLIC_KEY_INFO* info,
                                       unsigned int uUnused3,
                                       unsigned int uUnused4,
                                       unsigned char** ppBlob,
                                       unsigned int* pcbBlob);

/// Splits a key blob into what a certificate's public key info is made of: the
/// bit string's content and the algorithm's parameters.
///
///     unsigned char* back = nullptr;
///     unsigned char* params = nullptr;
///     unsigned int back_size = 0;
///     unsigned int params_size = 0;
///     if (korvan::KRVEncodePublicKeyAndParametrs(0, nullptr, blob, size, 0, 0,
///                                                &back, &back_size, &params,
///                                                &params_size)) {
///       assert(back_size == 66 && params_size == 0);
///       std::free(back);
///       std::free(params);
///     }
///
/// The bit string's content is the key in a DER OCTET STRING; for the
/// algorithm 0x2E29 alone, the provider's own GOST R 34.10-94, it is the bare
/// key. So a key that `KRVConvertPublicKeyInfo` took whole comes back INSIDE AN
/// OCTET STRING THAT WAS NOT THERE BEFORE; this is intended.
///
/// Of the header only the algorithm and `bitLen` are looked at. The key is the
/// blob's last `bitLen / 8` bytes, rounded down; what stands between it and
/// the header is the parameters.
///
/// @param uUnused1   not read.
/// @param pszUnused2 not read; may be null.
/// @param pbBlob     the blob; only read. Must not be null.
/// @param cbBlob     its size in bytes. Must not be 0.
/// @param uUnused5   not read.
/// @param uUnused6   not read.
/// @param ppbKey     in: null, or a buffer to be freed. Out: the bit string's
///                   content, to be freed with `free`. Null where only its
///                   size is asked for.
/// @param pcbKey     receives the size of the bit string's content. Must not
///                   be null, and is not checked.
/// @param ppbParams  as `ppbKey`, for the parameters. `*ppbParams` stays null
///                   when there are none.
/// @param pcbParams  receives the size of the parameters. Must not be null,
///                   and is not checked.
/// @return 1 on success, 0 on failure. With null for `ppbKey` and for
///         `ppbParams` it gives the sizes alone.
/// @par Errors
/// On failure the last error is
///   - 87, `ERROR_INVALID_PARAMETER`: `pbBlob` is null or `cbBlob` 0. NOTHING
///     IS FREED OR WRITTEN;
///   - 0x80090003, `NTE_BAD_KEY`: the blob has fewer than 16 bytes, or fewer
///     than header and key need, or parameters of 2 GiB or more. Both pointers
///     are null, the sizes unchanged;
///   - 0x800B0005, `DIGSIG_E_ENCODE`: the platform's encoder reports a
///     failure. Both pointers are null, the sizes unchanged;
///   - 0x8009000E, `NTE_NO_MEMORY`: allocation of an output fails. Both
///     sizes are written. `*ppbParams` is null; `*ppbKey` IS NULL ONLY IF ITS
///     OWN BUFFER FAILED, else it holds the key and is to be freed.
/// @ownership{Both outputs are the caller's. The blob stays whose it was.}
/// @threads{Any thread at any time.}
/// @throws std::bad_alloc and what the platform's record classes throw: both
///         pointers are null then and the sizes unchanged.
KORVAN_API int KRVEncodePublicKeyAndParametrs(
    unsigned int uUnused1, const char* pszUnused2, const unsigned char* pbBlob,
    unsigned int cbBlob, unsigned int uUnused5, unsigned int uUnused6,
    unsigned char** ppbKey, unsigned int* pcbKey, unsigned char** ppbParams,
    unsigned int* pcbParams);

}  // namespace korvan

#endif  // KORVAN_PUBLIC_KEY_H_
