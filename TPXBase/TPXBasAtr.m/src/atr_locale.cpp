// atr_locale.cpp: the choice of locales and the search for the dictionary file.
#include "atr_StringBasePrv.h"
#include "atr_dictionary.h"
#include "atr_tr.h"
#include "mem_Alloc.h"

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>

namespace {

constexpr char kDefaultDictionary[] =
    "/TPXQorModules/Runtree/TPX/Configuration/Xresources/en_US/en_US_Dict.py";
constexpr char kLcAllName[] = "KLD_LC_ALL=";

// Process-wide: once handed to putenv it is part of the environment.
char g_lcAll[4096];

/// The whole locale's name as the locale service reports it, published as KLD_LC_ALL. A name
/// that does not fit the buffer is refused: the variable is removed rather than cut short.
void PublishLocaleName() {
  const char* name = std::setlocale(LC_ALL, nullptr);
  if (name == nullptr) name = "";
  size_t length = std::strlen(name);
  if (sizeof(kLcAllName) - 1 + length >= sizeof(g_lcAll)) {
    unsetenv("KLD_LC_ALL");
    return;
  }
  std::memcpy(g_lcAll, kLcAllName, sizeof(kLcAllName) - 1);
  std::memcpy(g_lcAll + sizeof(kLcAllName) - 1, name, length + 1);
  putenv(g_lcAll);
}

void ToSlashes(char* text) {
  for (; *text != '\0'; ++text)
    if (*text == '\\') *text = '/';
}

/// The relative dictionary path chosen by the environment, from mem_Malloc, or null when no
/// memory is left. Sets the locales when translation is configured.
char* ChooseLocaleAndRelativePath() {
  const char* dictionary = std::getenv("KALDER_TRANSLATION_DICTIONARY");
  char* relative;
  if (std::getenv("KALDER_SUPPORTED_LOCALE") != nullptr && dictionary != nullptr) {
    static const char* const kWhole[] = {"en", "en_US", "English_United States.1252", "C"};
    for (const char* name : kWhole)
      if (std::setlocale(LC_ALL, name) != nullptr) break;
    const char* lang = std::getenv("KALDER_LANG");
    std::setlocale(LC_CTYPE, lang != nullptr ? lang : "");
    std::setlocale(LC_NUMERIC, "C");
    size_t length = std::strlen(dictionary);
    relative = static_cast<char*>(mem_Malloc(length + 2));
    if (relative != nullptr) {
      relative[0] = '/';
      std::memcpy(relative + 1, dictionary, length + 1);
    }
  } else {
    relative = static_cast<char*>(mem_Malloc(sizeof(kDefaultDictionary)));
    if (relative != nullptr) std::memcpy(relative, kDefaultDictionary, sizeof(kDefaultDictionary));
  }
  PublishLocaleName();
  if (relative != nullptr) ToSlashes(relative);
  return relative;
}

/// Whether path names a regular file that opens for reading. A directory or a FIFO named like
/// the dictionary is passed over (opening a FIFO would wait for a writer).
bool OpensAsFile(const char* path) {
  struct stat info;
  if (stat(path, &info) != 0 || !S_ISREG(info.st_mode)) return false;
  std::FILE* file = std::fopen(path, "r");
  if (file == nullptr) return false;
  std::fclose(file);
  return true;
}

}  // namespace

char* atr_dictionary::FindDictionaryFile() {
  char* relative = ChooseLocaleAndRelativePath();
  const char* kalPath = std::getenv("KAL_PATH");
  if (relative == nullptr || kalPath == nullptr) {
    mem_Free(relative);
    return nullptr;
  }
  const char* dictDir = std::getenv("QFN_DICT_DIR");
  size_t dictDirLength = dictDir != nullptr ? std::strlen(dictDir) + 1 : 0;
  size_t kalPathLength = std::strlen(kalPath);
  size_t relativeLength = std::strlen(relative);

  // The search list, then room for the longest candidate: one directory plus the relative path.
  size_t listLength = dictDirLength + kalPathLength;
  char* list = static_cast<char*>(mem_Malloc(listLength + 1));
  char* candidate = static_cast<char*>(mem_Malloc(listLength + relativeLength + 1));
  char* found = nullptr;
  if (list != nullptr && candidate != nullptr) {
    if (dictDir != nullptr) {
      std::memcpy(list, dictDir, dictDirLength - 1);
      list[dictDirLength - 1] = ';';
    }
    std::memcpy(list + dictDirLength, kalPath, kalPathLength + 1);
    ToSlashes(list);

    for (const char* piece = list; *piece != '\0' && found == nullptr;) {
      const char* end = std::strchr(piece, ';');
      if (end == nullptr) end = piece + std::strlen(piece);
      if (end != piece) {  // empty pieces are skipped
        size_t length = static_cast<size_t>(end - piece);
        while (length > 0 && piece[length - 1] == '/') --length;
        std::memcpy(candidate, piece, length);
        std::memcpy(candidate + length, relative, relativeLength + 1);
        if (OpensAsFile(candidate)) found = candidate;
      }
      piece = *end == ';' ? end + 1 : end;
    }
  }
  mem_Free(list);
  mem_Free(relative);
  if (found == nullptr) mem_Free(candidate);
  return found;
}

bool atr_setlocale(atr_StringBase* path) {
  char* found = atr_dictionary::FindDictionaryFile();
  if (found == nullptr) return false;
  if (path != nullptr) {
    // Freed even if the string cannot be made.
    struct Owner {
      char* text;
      ~Owner() { mem_Free(text); }
    } owner{found};
    atr_StringBasePrv(found).AssignTo(*path);
  } else
    mem_Free(found);
  return true;
}
