// atr_dictionary.h: the dictionary as the formatter and the locale search see it (module only).
#ifndef ATR_DICTIONARY_H
#define ATR_DICTIONARY_H

#include <cstdio>

namespace atr_dictionary {

/// The translation of text, or null when the dictionary is not loaded or has no such key.
/// Keys compare byte by byte as unsigned values.
const char* Lookup(const char* text);

/// A number that changes whenever the table is loaded or released, so that what was derived
/// from lookups can tell it is still valid.
unsigned Generation();

/// Finds the dictionary file (the search of atr_setlocale, locales included) and gives its
/// name in a buffer from mem_Malloc that the caller frees, or null when there is none.
char* FindDictionaryFile();

/// Reads the dictionary from file into the table, which must be empty. Gives the number of
/// entries stored (0 when none).
int ReadDictionary(std::FILE* file);

/// Removes backslash escapes from the len bytes at text in place; gives the new length.
int Unescape(char* text, int len);

}  // namespace atr_dictionary

#endif  // ATR_DICTIONARY_H
