/// @file TPXBasErrorStack.h
/// The allocation library's stack of error texts and call-stack capture.
#ifndef TPXBASERRORSTACK_H
#define TPXBASERRORSTACK_H

#include "KLDTPXBasAllocExport.h"

/// Collects texts (call stacks of thrown exceptions) while active. Thread-safe.
class KLDTPXBASALLOC_API TPXBasErrorStack {
 public:
  /// Whether texts are being collected (off unless switched on by mem_Testing).
  static bool Active();
  /// Keeps a copy of text; null is ignored.
  static void Push(const char* text);
};

/// The calling thread's call stack as text, captured by the constructor into a 4096-byte
/// buffer. The two status words after the buffer are both non-zero when the capture worked.
class KLDTPXBASALLOC_API TPXBasCallStack {
 public:
  /// Captures at most maxFrames frames above the caller; context is reserved and may be null.
  TPXBasCallStack(int maxFrames, void* context);
  ~TPXBasCallStack();
  TPXBasCallStack(const TPXBasCallStack&) = delete;
  TPXBasCallStack& operator=(const TPXBasCallStack&) = delete;

  /// One line per frame, "#<n> <address> <symbol>+<offset> (<object>)"; always terminated.
  const char* CStr() const { return m_text; }
  /// Whether the capture worked (both status words set).
  bool Available() const { return m_frames != 0 && m_complete != 0; }

 private:
  char m_text[4096];
  unsigned int m_frames;    // frames captured
  unsigned int m_complete;  // non-zero once the text has been written
};

#endif  // TPXBASERRORSTACK_H
