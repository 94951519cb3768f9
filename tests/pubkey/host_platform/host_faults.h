// What the host of these tests is told to do by the test in whose process it
// lives.
#ifndef KORVAN_TESTS_PUBKEY_HOST_PLATFORM_HOST_FAULTS_H_
#define KORVAN_TESTS_PUBKEY_HOST_PLATFORM_HOST_FAULTS_H_

namespace korvan::test {

struct HostFaults {
  bool throw_for_malformed = false;  // SetEncodedEntry, else it reports
  int throw_at_call = 0;             // the nth call of all throws; 0 is none
  int content_status = 0;            // what GetRecord sets
  int encoding_status = 0;           // what GetEncodedRecord sets
  int content_excess = 0;            // GetRecord gives so many bytes more
  int content_size = -1;             // what GetEntrySize tells, if not negative
  int lie_at_call = 0;               // the nth call of all lies; 0 is none
  bool lies_on = false;              // and all calls after it
  int lie = 0;             // which one, 0 to 3: host_platform.cc tells them
  int throw_at_error = 0;  // the nth call of SetLastError throws
  int errors = 0;          // counted
  int calls = 0;           // counted
  int alive = 0;           // buffers and records not yet destroyed
};
extern HostFaults host_faults;

}  // namespace korvan::test

#endif  // KORVAN_TESTS_PUBKEY_HOST_PLATFORM_HOST_FAULTS_H_
