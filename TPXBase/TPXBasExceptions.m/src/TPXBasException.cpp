// TPXBasException.cpp: the exception base, its call-stack recording and the assertion,
// execution and pattern exceptions.
#include "TPXBasException.h"

#include "TPXBasErrorStack.h"
#include "atr_translate.h"

#include <cstdlib>

namespace {
const TPXBasStringMode kUtf8(false);
}  // namespace

TPXBasException::~TPXBasException() = default;

atr_String TPXBasException::DeveloperReport(TPXBasStringMode mode) const {
  const atr_String user = UserReport(kUtf8);
  const atr_String report = atr<const char*, const char*, int>(
      "Exception: %s in file %s at line %d", user.CStr(), m_file, m_line, kUtf8);
  return TPXBasAtrStringMode::Utf8ToModal(report, mode);
}

atr_String TPXBasException::UserReport(TPXBasStringMode mode) const { return AsString(mode); }

TPXBasException* TPXBasException::Clone() const { return nullptr; }

void TPXBasException::Throw(const char* file, int line) {
  m_file = file;
  m_line = line;
  try {
    if (TPXBasErrorStack::Active()) {
      // The capture object holds a 4 KB text: keep it off the stack of a deep caller.
      TPXBasCallStack* stack =
          new (mem_OperatorNewThrow(sizeof(TPXBasCallStack))) TPXBasCallStack(10, nullptr);
      if (stack->Available()) TPXBasErrorStack::Push(stack->CStr());
      stack->~TPXBasCallStack();
      mem_Free(stack);
    }
  } catch (...) {
    // Recording is best effort: the exception itself must still be thrown.
  }
  Propagate();
  std::abort();  // only a Propagate that breaks its contract returns
}

// ---------------------------------------------------------------------------------------------

TPXBasAssertException::TPXBasAssertException(const char* condition)
    : m_condition(atr<const char*>("%s", condition, kUtf8)) {}
TPXBasAssertException::TPXBasAssertException(const TPXBasAssertException& other) = default;
TPXBasAssertException::~TPXBasAssertException() = default;

atr_String TPXBasAssertException::AsString(TPXBasStringMode) const {
  return atr<const char*>("Assertion Failure: %s", m_condition.CStr(), kUtf8);
}
void TPXBasAssertException::Propagate() const { throw TPXBasAssertException(*this); }
TPXBasException* TPXBasAssertException::Clone() const { return new TPXBasAssertException(*this); }
int TPXBasAssertException::GetCode() const { return 300; }

// ---------------------------------------------------------------------------------------------

TPXBasExecException::TPXBasExecException(int count) : m_count(count) {}
TPXBasExecException::TPXBasExecException(const TPXBasExecException& other) = default;
TPXBasExecException::~TPXBasExecException() = default;

atr_String TPXBasExecException::AsString(TPXBasStringMode) const {
  return atr<int>("rgx_match: exec error: %d", m_count, kUtf8);
}
void TPXBasExecException::Propagate() const { throw TPXBasExecException(*this); }
TPXBasException* TPXBasExecException::Clone() const { return new TPXBasExecException(*this); }
int TPXBasExecException::GetCode() const { return 301; }

// ---------------------------------------------------------------------------------------------

TPXBasPatternException::TPXBasPatternException(int offset, const char* message)
    : m_offset(offset), m_msg(atr<const char*>("%s", message, kUtf8)) {}
TPXBasPatternException::TPXBasPatternException(const TPXBasPatternException& other) = default;
TPXBasPatternException::~TPXBasPatternException() = default;

atr_String TPXBasPatternException::AsString(TPXBasStringMode) const {
  return atr<int, const char*>("rgx_match: error in regex at offset %d: %s", m_offset, m_msg.CStr(),
                               kUtf8);
}
void TPXBasPatternException::Propagate() const { throw TPXBasPatternException(*this); }
TPXBasException* TPXBasPatternException::Clone() const { return new TPXBasPatternException(*this); }
int TPXBasPatternException::GetCode() const { return 302; }
