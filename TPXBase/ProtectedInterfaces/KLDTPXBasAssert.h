/// @file KLDTPXBasAssert.h
/// The one assertion macro of the library.
#ifndef KLDTPXBASASSERT_H
#define KLDTPXBASASSERT_H

#include "DXLFatalError.h"

/// Reports a broken invariant through the platform's fatal-error service: the message is
/// "AssertionFailed:" followed by the expression as written, then the source path of the file
/// (its `kAssertPath`, named once after its includes) and the line. On in every build type.
///
/// Each source file that asserts declares
///   static constexpr const char kAssertPath[] = "TPXBase/TPXBasAtr.m/src/atr_StringBase";
/// and a shared template declares the same as a static member of its own.
///
/// The stringised expression folds runs of spaces to one, so write the expression as the
/// report must read; where the report's spacing differs from clang-format's, wrap the line in
/// `// clang-format off` / `// clang-format on`.
#define KLD_ASSERT(...)                 \
  ((__VA_ARGS__) ? static_cast<void>(0) \
                 : KLDAssertFailed("AssertionFailed:" #__VA_ARGS__, kAssertPath, __LINE__))

/// The cold sink of KLD_ASSERT: one call of DXLFatalError with null second to fourth texts.
/// Returns only if the platform's service does.
[[gnu::cold, gnu::noinline]] inline void KLDAssertFailed(const char* message,
                                                         const char* sourcePath, int line) {
  DXLFatalError(message, nullptr, nullptr, nullptr, sourcePath, line);
}

#endif  // KLDTPXBASASSERT_H
