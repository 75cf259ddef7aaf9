// TPXBasSystemError.cpp: the system's message of an error code, asked for once.
#include "TPXBasSystemError.h"

#include <string.h>

namespace {

// The XSI strerror_r stores the text; the GNU one may return a static text instead. Either
// way the result is the message in the process locale's encoding.
[[maybe_unused]] const char* Message(int result, const char* buffer) {
  return result == 0 ? buffer : nullptr;
}
[[maybe_unused]] const char* Message(const char* result, const char*) { return result; }

}  // namespace

const char* TPXBasSystemError::AsString() const {
  if (!m_message.IsNull() && !m_message.IsBAD()) return m_message.CastToCharPtr();
  char buffer[512] = "";
  const char* text = Message(strerror_r(m_code, buffer, sizeof buffer), buffer);
  TPXString message;
  if (text == nullptr || message.BuildFromLocale(text) != TPXString::Success || message.IsNull())
    message = "Internal error converting string from UTF16 to UTF8";
  m_message = message;
  return m_message.CastToCharPtr();
}
