// aio_Names.h: conversion of file names between UTF-8 and the process locale's encoding.
//
// The streams take file names in UTF-8 and hand the system the locale form. These two
// functions are the only place where that conversion is made, so that they can be switched to
// the library's OS-string converter without touching the streams.
#ifndef AIO_NAMES_H
#define AIO_NAMES_H

/// The locale form of a UTF-8 name, in a block from mem_Malloc (release with mem_Free); null
/// when the name is not valid UTF-8 or the locale cannot represent one of its characters.
char* kld_Utf8NameToLocale(const char* utf8);

/// The UTF-8 form of a name in the locale's encoding, in a block from mem_Malloc; null when
/// the name is not valid in the locale's encoding.
char* kld_LocaleNameToUtf8(const char* name);

/// The stream's answer to a UTF-8 name that the locale cannot represent.
class aio_ios;
void kld_ReportNameNotInLocale(aio_ios& stream);

#endif  // AIO_NAMES_H
