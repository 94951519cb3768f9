/// @file
/// `KORVAN_API`, the only macro that a user of the library meets.
#ifndef KORVAN_EXPORT_H_
#define KORVAN_EXPORT_H_

/// Marks what the shared libraries export. Everything else in them is hidden.
#define KORVAN_API __attribute__((visibility("default")))

#endif  // KORVAN_EXPORT_H_
