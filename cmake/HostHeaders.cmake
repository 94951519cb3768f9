# Looks at the two headers of a host, in KORVAN_HOST_INCLUDE_DIR, for what the
# library uses of them. The compiler would complain of what is missing in the
# midst of the library's own sources; this names it. docs/host.md says what each
# must do.

set(host_count 0)
set(host_all "")
macro(korvan_host_has header member use)
  set(host_header_${host_count} ${header})
  set(host_member_${host_count} "${member}")
  set(host_use_${host_count} "${use}")
  string(APPEND host_all "namespace use_${host_count} { ${use} }\n")
  math(EXPR host_count "${host_count} + 1")
endmacro()

korvan_host_has(last_error.h "SetLastError(unsigned int)"
  [[void Use() { SetLastError(1U); }]])
korvan_host_has(asn1_record.h "IdentObj(const void*, unsigned int)"
  [[void Use(const unsigned char* bytes) { IdentObj key(bytes, 1U); }]])
korvan_host_has(asn1_record.h "IdentObj::operator=(const IdentObj&)"
  [[void Use(IdentObj& key, const IdentObj& other) { key = other; }]])
korvan_host_has(asn1_record.h "IdentObj::length, an unsigned int"
  [[unsigned int Use(const IdentObj& key) { return {key.length}; }]])
korvan_host_has(asn1_record.h "IdentObj::data, a pointer to bytes"
  [[auto Use(const IdentObj& key) { return static_cast<const unsigned char*>(key.data); }]])
korvan_host_has(asn1_record.h "CASNTBaseRecord()"
  [[void Use() { CASNTBaseRecord record; }]])
korvan_host_has(asn1_record.h "CASNTBaseRecord::SetEncodedEntry(const IdentObj&)"
  [[void Use(CASNTBaseRecord& record, IdentObj& key) { record.SetEncodedEntry(key); }]])
korvan_host_has(asn1_record.h "CASNTBaseRecord::GetTag()"
  [[bool Use(CASNTBaseRecord& record) { return record.GetTag() != 4U; }]])
korvan_host_has(asn1_record.h "CASNTBaseRecord::GetEntrySize()"
  [[unsigned int Use(CASNTBaseRecord& record) { return record.GetEntrySize(); }]])
korvan_host_has(asn1_record.h "CASNTBaseRecord::GetIsConstraction()"
  [[int Use(CASNTBaseRecord& record) { return record.GetIsConstraction() ? 1 : 0; }]])
korvan_host_has(asn1_record.h "CASNTBaseRecord::GetRecord(int*)"
  [[void Use(CASNTBaseRecord& record, IdentObj& key, int status) { key = record.GetRecord(&status); }]])
korvan_host_has(asn1_record.h "CASNTBaseRecord::SetTag(unsigned int)"
  [[void Use(CASNTBaseRecord& record) { record.SetTag(4U); }]])
korvan_host_has(asn1_record.h "CASNTBaseRecord::SetEntry(const void*, unsigned int)"
  [[void Use(CASNTBaseRecord& record, const unsigned char* bytes) { record.SetEntry(bytes, 1U); }]])
korvan_host_has(asn1_record.h "CASNTBaseRecord::GetEncodedRecord(int*)"
  [[void Use(CASNTBaseRecord& record, int status) { const IdentObj& encoding = record.GetEncodedRecord(&status); static_cast<void>(encoding); }]])

# Whether `use` compiles after `headers`, and what the compiler says.
function(korvan_host_compiles result output use)
  set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
  list(TRANSFORM ARGN REPLACE "(.+)" "#include <korvan/platform/\\1>")
  list(JOIN ARGN "\n" includes)
  try_compile(compiles
    SOURCE_FROM_CONTENT host.cc "${includes}\n${use}\n"
    CMAKE_FLAGS "-DINCLUDE_DIRECTORIES=${KORVAN_HOST_INCLUDE_DIR}\;${PROJECT_SOURCE_DIR}/include"
    OUTPUT_VARIABLE log
    CXX_STANDARD 20
    CXX_STANDARD_REQUIRED ON
    NO_CACHE)
  set(${result} ${compiles} PARENT_SCOPE)
  set(${output} "${log}" PARENT_SCOPE)
endfunction()

set(host_folder "KORVAN_HOST_INCLUDE_DIR, which is '${KORVAN_HOST_INCLUDE_DIR}'")
set(host_headers last_error.h asn1_record.h)
foreach(header ${host_headers})
  if(NOT EXISTS "${KORVAN_HOST_INCLUDE_DIR}/korvan/platform/${header}")
    message(FATAL_ERROR "KORVAN_PLATFORM=host needs the host's own "
      "korvan/platform/${header} in ${host_folder}")
  endif()
endforeach()
korvan_host_compiles(compiles log "${host_all}" ${host_headers})
if(NOT compiles)
  foreach(header ${host_headers})
    korvan_host_compiles(compiles log "" ${header})
    if(NOT compiles)
      message(FATAL_ERROR "korvan/platform/${header} in ${host_folder}, does "
        "not compile:\n${log}")
    endif()
  endforeach()
  set(missing "")
  math(EXPR last "${host_count} - 1")
  foreach(i RANGE ${last})
    korvan_host_compiles(compiles log "${host_use_${i}}" ${host_header_${i}})
    if(NOT compiles)
      string(APPEND missing
        "\n  korvan/platform/${host_header_${i}}: ${host_member_${i}}")
    endif()
  endforeach()
  message(FATAL_ERROR "The host's headers in ${host_folder}, lack what "
    "docs/host.md asks of them:${missing}")
endif()
