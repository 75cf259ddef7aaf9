/// @file atr_inspect.h
/// The dictionary file and format texts as the message translation reads them,
/// for tools that check dictionaries and messages before a host uses them.
#ifndef ATR_INSPECT_H
#define ATR_INSPECT_H

#include "KLDTPXBasExport.h"
#include "mem_AllocationOperators.h"

#include <cstdio>

/// How the dictionary reader treats one line of a dictionary file.
enum atr_DictLineEnm {
  atr_DictLineEntry = 0,      ///< loaded: key and translation are stored
  atr_DictLineIdentity,       ///< the translation is written exactly as its key: not stored
  atr_DictLineInvalidUtf8,    ///< the translation is not valid UTF-8: skipped with a warning
  atr_DictLineNoTranslation,  ///< the line ends right after the assignment: skipped
  atr_DictLineUnusable,       ///< a zero byte in the line: skipped (a zero byte made by an
                              ///< escape ends the key or translation instead)
  atr_DictLineOverLong        ///< a piece of a line longer than atr_DictScanner::MaxLine bytes
                              ///< that holds no assignment: passed over like any such line
};

/// One line of a dictionary file that the reader looks at. The texts point into the scanner
/// and stay valid until its next call of Next.
struct atr_DictLine {
  int m_number;            ///< line number in the file, from 1
  atr_DictLineEnm m_kind;  ///< what the reader does with the line
  const char* m_rawKey;    ///< the key as written (not zero-terminated; empty when over-long)
  int m_rawKeyLength;      ///< bytes of m_rawKey
  const char* m_rawText;   ///< the translation as written: up to the line's last character,
                           ///< which the reader takes as the closing quote whatever it is
                           ///< (m_rawText[m_rawTextLength] is that character)
  int m_rawTextLength;     ///< bytes of m_rawText
  const char* m_key;       ///< the unescaped key, zero-terminated; "" unless an entry
  int m_keyLength;         ///< bytes of m_key
  const char* m_text;      ///< the unescaped translation, zero-terminated; "" unless an entry
  int m_textLength;        ///< bytes of m_text (0 for an empty translation, which is an entry)
  int m_piece;             ///< 0 for a whole line; 1, 2, ... for the pieces of a line longer
                           ///< than atr_DictScanner::MaxLine, each read as a line of its own
                           ///< (m_number stays the line's number)
};

/// Walks a dictionary file line by line exactly as the translation dictionary loads it, and
/// says for each line that holds the assignment "'] = r'" (and for each piece of a line longer
/// than MaxLine bytes, which the loader reads as several lines) what the loader makes of it. Other
/// lines (comments, headers, blank lines, assignments without a key) are passed over, as the loader
/// passes over them. Reads from the stream's current position; the stream stays the caller's.
/// Writes nothing to the standard error stream. Belongs to one thread; not copyable.
class KLDTPXBAS_API atr_DictScanner : public mem_AllocationOperators {
 public:
  /// Longest line the reader takes at once, newline excluded; the rest of a longer line is
  /// read as the next line(s).
  static constexpr int MaxLine = 8191;

  /// Reads file from its current position; file stays the caller's and must outlive the
  /// scanner.
  explicit atr_DictScanner(std::FILE* file);
  ~atr_DictScanner();
  atr_DictScanner(const atr_DictScanner&) = delete;
  atr_DictScanner& operator=(const atr_DictScanner&) = delete;

  /// False when the scanner's buffers could not be allocated: Next then gives false at once.
  bool Ok() const { return m_buffer != nullptr; }

  /// The next line the reader looks at, or false at the end of the file.
  bool Next(atr_DictLine& line);

 private:
  bool ReadLine(int& length);

  std::FILE* m_file;
  char* m_buffer;  ///< the line, then room for the unescaped key and translation
  int m_number = 0;
  int m_piece = 0;           ///< piece of the current line (0: the line is whole)
  bool m_continues = false;  ///< the next read goes on with the current line
};

/// Writes one dictionary entry line "d['KEY'] = r'TEXT'" and its newline, escaped so that the
/// reader gives back exactly key and text (backslashes and line ends are escaped, and the
/// key's "]", so that no part of the key can be taken for the assignment).
/// A key written with itself as text is an identity line, which the reader does not store.
/// False, and nothing written, when the pair cannot be written so: a zero byte, a text that
/// is not valid UTF-8, a line longer than atr_DictScanner::MaxLine, or a write error.
KLDTPXBAS_API bool atr_DictWriteEntry(std::FILE* out, const char* key, int keyLength,
                                      const char* text, int textLength);

/// The dictionary's key order, in which the loader sorts its keys and searches them: bytes
/// compared as unsigned values, a prefix first. Below, equal to or above zero.
KLDTPXBAS_API int atr_DictKeyCompare(const char* a, int aLength, const char* b, int bLength);

/// One conversion of a format text as the message formatter parses it.
struct atr_FormatConversion {
  int m_argument;        ///< the argument it receives: its rank by number, from 1
  int m_number;          ///< its number, written ("%2$s") or given by the numbering
  bool m_numbered;       ///< whether the number was written in the text
  char m_letter;         ///< the conversion letter: one of E X c d e f g o s u x
  const char* m_format;  ///< its text: "%", flags, width and precision, letter (a length letter
                         ///< just before the letter dropped), as the formatter keeps it
};

/// The conversions of a format text, in order of appearance, found by the parser that builds
/// every message (atr_translate.h). Building the listing takes time linear in the text and
/// ForArgument constant time, so a text with tens of thousands of conversions stays cheap. A text
/// with "%" followed directly by "$" cannot be parsed: Ok is then false and there are no
/// conversions (no fatal error is raised here).
class KLDTPXBAS_API atr_FormatConversions : public mem_AllocationOperators {
 public:
  /// AsTranslation parses the text as it stands, as a translation from the dictionary is
  /// parsed; AsFormat first cuts it before a "\@" note, as a program's format text that the
  /// dictionary does not hold is cut.
  enum SourceMode { AsTranslation = 0, AsFormat = 1 };

  /// A null text has no conversions. Throws std::bad_alloc when memory runs out.
  explicit atr_FormatConversions(const char* text, SourceMode source = AsTranslation);
  ~atr_FormatConversions();
  atr_FormatConversions(const atr_FormatConversions&) = delete;
  atr_FormatConversions& operator=(const atr_FormatConversions&) = delete;

  /// False when the text holds a conversion "%$" that names no argument: a translation that
  /// does falls back to its key.
  bool Ok() const { return m_ok; }
  /// Number of conversions; 0 when not Ok().
  int Count() const { return m_count; }
  /// Conversion i (0 to Count() - 1) in order of appearance; any other i is a broken
  /// invariant (fatal report "AssertionFailed:i >= 0 && i < m_count").
  const atr_FormatConversion& operator[](int i) const;
  /// The conversion that receives argument n, or null when n is below 1 or above Count().
  const atr_FormatConversion* ForArgument(int n) const;

 private:
  bool m_ok = true;
  int m_count = 0;
  atr_FormatConversion* m_conversions = nullptr;  ///< from mem_Malloc
  char* m_formats = nullptr;                      ///< the conversion texts, one block
  int* m_byArgument = nullptr;  ///< conversion index of each argument (n - 1), from mem_Malloc
};

/// The translation of text in the loaded dictionary, or null when there is none (or no
/// dictionary is loaded). Lookups are exact, byte by byte; the pointer stays valid until the
/// dictionary is released.
KLDTPXBAS_API const char* atr_trLookup(const char* text);

/// Loads the dictionary from the file named path instead of searching for it, as
/// atr_tr_enable(true) would load the file it finds (the locales are left alone). Does nothing
/// when a load was already made since the last release. Gives the number of entries loaded
/// now or before (0 when none, also when the file cannot be opened).
KLDTPXBAS_API int atr_trLoadFile(const char* path);

#endif  // ATR_INSPECT_H
