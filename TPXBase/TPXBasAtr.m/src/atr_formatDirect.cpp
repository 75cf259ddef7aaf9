// atr_formatDirect.cpp: the one-pass form of a message whose arguments are texts and ints.
//
// The general path builds an atr_translate for every message: it looks the text up, finds its
// template in the template cache (hashing the whole text), substitutes each argument into a
// buffer of its own and assembles the result. For the messages hosts format most often (a
// format held in one place in the program, texts and ints as arguments, conversions without
// flags) all of that is known after the first time. Each thread keeps, per format address, the
// template's literal pieces and which argument each placeholder shows; a later call with the
// same address, the same bytes and the same dictionary writes the message in one pass.
//
// The record is derived from an atr_translate that the general path built, and a call takes
// the direct path only when the general path would copy each argument unchanged (see
// Takes), so both give the same bytes.
#include "atr_decimal.h"
#include "atr_dictionary.h"
#include "atr_translate.h"
#include "mem_Alloc.h"

#include <cstdint>
#include <cstring>

/// What a thread keeps of one format: a block from mem_Malloc holding this header, then
/// argument[count] (the argument each placeholder shows, in order of appearance), then
/// pieceLength[count + 1], letter[count] and bare[count], then the format's bytes and its
/// terminator, then the literal pieces one after another. count 0: the format does not take
/// the direct path (no conversion, or a text the general path must handle).
struct atr_DirectProgram {
  const char* address;
  unsigned generation;
  int count;
  int textBytes;
  int pieceBytes;

  int* Argument() { return reinterpret_cast<int*>(this + 1); }
  int* PieceLength() { return Argument() + count; }
  char* Letter() { return reinterpret_cast<char*>(PieceLength() + count + 1); }
  char* Bare() { return Letter() + count; }
  char* Text() { return Bare() + count; }
  char* Pieces() { return Text() + textBytes; }

  /// The record of message, the template that text gave; null when memory runs out.
  static atr_DirectProgram* Make(const char* text, const atr_translate& message);
};

namespace {

constexpr int kSlots = 64;

// Trivially destructible, so that they stay readable during the thread's own destructors.
thread_local atr_DirectProgram* t_slots[kSlots];
thread_local bool t_closed = false;

/// Frees this thread's records when the thread ends; from then on nothing is recorded.
struct Reaper {
  ~Reaper() {
    for (atr_DirectProgram*& slot : t_slots) {
      mem_Free(slot);
      slot = nullptr;
    }
    t_closed = true;
  }
};
thread_local Reaper t_reaper;

atr_DirectProgram*& SlotOf(const char* text) {
  const auto bits = reinterpret_cast<std::uintptr_t>(text);
  return t_slots[(bits ^ (bits >> 6) ^ (bits >> 12)) % kSlots];
}

/// Whether the general path copies argument a unchanged into a placeholder of this letter:
/// a text goes into any conversion as it is, except into a "%s" with a width, a precision or
/// "-"; an int is written in decimal for "%s" (whatever its flags) and for a bare "%d".
/// "%u" (bare) writes it as unsigned.
bool Takes(const atr_detail::DirectArg& a, char letter, bool bare) {
  if (a.text != nullptr) return letter != 's' || bare;
  return letter == 's' || (bare && (letter == 'd' || letter == 'u'));
}

}  // namespace

atr_DirectProgram* atr_DirectProgram::Make(const char* text, const atr_translate& message) {
  const int count = message.m_template != nullptr ? message.m_count : 0;
  const size_t textBytes = std::strlen(text) + 1;
  const size_t pieceBytes = count > 0 ? static_cast<size_t>(message.m_templateBytes) : 0;
  const size_t size = sizeof(atr_DirectProgram) +
                      static_cast<size_t>(count) * (2 * sizeof(int) + 2) + sizeof(int) + textBytes +
                      pieceBytes;
  auto* program = static_cast<atr_DirectProgram*>(mem_Malloc(size));
  if (program == nullptr) return nullptr;
  program->address = text;
  program->generation = atr_dictionary::Generation();
  program->count = count;
  program->textBytes = static_cast<int>(textBytes);
  program->pieceBytes = static_cast<int>(pieceBytes);
  std::memcpy(program->Text(), text, textBytes);
  if (count == 0) return program;
  // The argument of each placeholder: argument n goes to m_byNumber[n - 1].
  for (int n = 0; n < count; ++n) program->Argument()[message.m_byNumber[n] - message.m_args] = n;
  for (int i = 0; i < count; ++i) {
    const char* conversion = message.m_args[i].m_format;
    const size_t length = std::strlen(conversion);
    program->Letter()[i] = conversion[length - 1];
    program->Bare()[i] = length == 2;
  }
  // The pieces are the runs between the template's zero bytes; its last byte ends the last.
  const char* piece = message.m_template;
  for (int i = 0; i <= count; ++i) {
    const size_t length = std::strlen(piece);
    program->PieceLength()[i] = static_cast<int>(length);
    piece += length + 1;
  }
  std::memcpy(program->Pieces(), message.m_template, pieceBytes);
  return program;
}

bool atr_FormatDirect(const char* text, const atr_detail::DirectArg* args, int count,
                      TPXBasStringMode mode, atr_String& out) {
  if (text == nullptr || mode.IsLocale() || t_closed) return false;
  atr_DirectProgram*& slot = SlotOf(text);
  atr_DirectProgram* program = slot;
  if (program == nullptr || program->address != text ||
      program->generation != atr_dictionary::Generation() ||
      std::strcmp(program->Text(), text) != 0) {
    atr_translate message(text, mode);
    program = atr_DirectProgram::Make(text, message);
    if (program == nullptr) return false;
    mem_Free(slot);
    slot = program;
  }
  if (program->count != count) return false;
  const int* argument = program->Argument();
  const char* letter = program->Letter();
  const char* bare = program->Bare();
  for (int i = 0; i < count; ++i)
    if (!Takes(args[argument[i]], letter[i], bare[i] != 0)) return false;

  // Each placeholder's bytes: the text itself, or the number written into numbers.
  constexpr int kInline = 8;
  char numbers[kInline][atr_decimal::kLongest];
  const char* value[kInline];
  size_t length[kInline];
  if (count > kInline) return false;
  size_t total = 0;
  for (int i = 0; i < count; ++i) {
    const atr_detail::DirectArg& a = args[argument[i]];
    if (a.text != nullptr) {
      value[i] = a.text;
      length[i] = std::strlen(a.text);
    } else {
      char* end = numbers[i] + sizeof numbers[i];
      value[i] = letter[i] == 'u'
                     ? atr_decimal::Write(end, static_cast<unsigned int>(a.number), false)
                     : atr_decimal::WriteSigned(end, a.number);
      length[i] = static_cast<size_t>(end - value[i]);
    }
    total += length[i] + static_cast<size_t>(program->PieceLength()[i]);
  }
  total += static_cast<size_t>(program->PieceLength()[count]);

  char local[512];
  char* buffer = total < sizeof local ? local : static_cast<char*>(mem_Malloc(total + 1));
  if (buffer == nullptr) return false;
  char* p = buffer;
  const char* piece = program->Pieces();
  for (int i = 0; i <= count; ++i) {
    const size_t run = static_cast<size_t>(program->PieceLength()[i]);
    std::memcpy(p, piece, run);
    p += run;
    piece += run + 1;
    if (i == count) break;
    std::memcpy(p, value[i], length[i]);
    p += length[i];
  }
  *p = '\0';
  try {
    out = atr_MakeAtrString(buffer);
  } catch (...) {
    if (buffer != local) mem_Free(buffer);
    throw;
  }
  if (buffer != local) mem_Free(buffer);
  return true;
}
