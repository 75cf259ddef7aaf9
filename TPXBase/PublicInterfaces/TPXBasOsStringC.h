/** @file TPXBasOsStringC.h
    OS strings for C callers, and the conversions and file opening for Fortran callers;
    compiles as C and as C++. */
#ifndef TPXBASOSSTRINGC_H
#define TPXBASOSSTRINGC_H

#include <stddef.h>

/** Exports a C entry point with C linkage and default visibility. */
#ifdef __cplusplus
#define KLDTPXBAS_OSSTRING_C_API extern "C" __attribute__((visibility("default")))
class TPXOsString;
#else
#define KLDTPXBAS_OSSTRING_C_API __attribute__((visibility("default")))
/** Opaque to C: made by TPXBasOsStringMake, read by TPXBasOsStringToOS. */
typedef struct TPXOsString TPXOsString;
#endif

/** A new OS string holding the UTF-16 form of the UTF-8 text (a null text is the empty one),
   owned by the caller until TPXBasOsStringRelease. Null when the text is not valid UTF-8 or
   memory runs out. */
KLDTPXBAS_OSSTRING_C_API TPXOsString* TPXBasOsStringMake(const char* utf8);
/** Destroys an OS string made by TPXBasOsStringMake; null is ignored. */
KLDTPXBAS_OSSTRING_C_API void TPXBasOsStringRelease(TPXOsString* string);
/** The zero-terminated UTF-16 units, valid until the string is released; null for a null
   string or one that holds no UTF-16 form. */
KLDTPXBAS_OSSTRING_C_API const unsigned short* TPXBasOsStringToOS(TPXOsString* string);

/* Fortran entry points. Every argument is passed by reference; the lengths of the character
   arguments follow, by value, as gfortran passes them. Each is exported under its bare name
   and with a trailing underscore. */

/** @{ */
/** Fortran entry points, also exported with a trailing underscore:
    tpxbasstrlocaletoutf8(text, out) and tpxbasstrutf8tolocale(text, out) convert the whole
    character variable text (trailing blanks included; a zero byte ends it) into out,
    blank-padded, and give the length written; -1 when text is not valid in its encoding (or
    memory runs out), -2 when out is too short (out is then untouched) and, for
    tpxbasstrutf8tolocale, when the text has no locale form (a character the locale cannot
    represent, or UTF-8 that is not strict). No entry point of this header throws. */
KLDTPXBAS_OSSTRING_C_API int tpxbasstrlocaletoutf8(const char* text, char* out, size_t textLength,
                                                   size_t outLength);
KLDTPXBAS_OSSTRING_C_API int tpxbasstrlocaletoutf8_(const char* text, char* out, size_t textLength,
                                                    size_t outLength);
KLDTPXBAS_OSSTRING_C_API int tpxbasstrutf8tolocale(const char* text, char* out, size_t textLength,
                                                   size_t outLength);
KLDTPXBAS_OSSTRING_C_API int tpxbasstrutf8tolocale_(const char* text, char* out, size_t textLength,
                                                    size_t outLength);
/** @} */

/** @{ */
/** Fortran entry point, also exported with a trailing underscore:
    tpxbasstrutf8fortranopen(name, access, share, security, creation, flags, attributes,
    templ) opens the file named by the whole of name (pass trim(name)) and gives its
    descriptor, or -1. access: 0x80000000 read, 0x40000000 write, both read and write;
    creation: 1 create new, 2 create always, 3 open existing, 4 open always, 5 truncate
    existing; share, flags and the three other arguments are not used. */
KLDTPXBAS_OSSTRING_C_API int tpxbasstrutf8fortranopen(const char* name, const int* access,
                                                      const int* share, const void* security,
                                                      const int* creation, const int* flags,
                                                      const void* attributes, const void* templ,
                                                      size_t nameLength);
KLDTPXBAS_OSSTRING_C_API int tpxbasstrutf8fortranopen_(const char* name, const int* access,
                                                       const int* share, const void* security,
                                                       const int* creation, const int* flags,
                                                       const void* attributes, const void* templ,
                                                       size_t nameLength);
/** @} */

#endif /* TPXBASOSSTRINGC_H */
