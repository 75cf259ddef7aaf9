/// @file TPXBasExceptionModel.h
/// The replaceable factory of pattern-matcher exceptions and the
/// process-wide model that holds it.
#ifndef TPXBASEXCEPTIONMODEL_H
#define TPXBASEXCEPTIONMODEL_H

#include "KLDTPXBasExport.h"
#include "mem_AllocationOperators.h"
#include "omi_Singleton.h"

/// Makes and throws the exceptions of a pattern matcher. A host derives from it to have its
/// own exception types thrown and installs it with TPXBasExceptionModel::setBehavior. Both
/// operations are expected not to return.
class KLDTPXBAS_API TPXBasExceptionFactory : public mem_AllocationOperators {
 public:
  virtual ~TPXBasExceptionFactory();
  /// Throws the exception of a pattern that failed to compile at offset, with message.
  virtual void throwPatternException(int offset, const char* message) const = 0;
  /// Throws the exception of a pattern match that failed with code count.
  virtual void throwExecException(int count) const = 0;
};

/// The factory installed by the library: throws TPXBasPatternException and
/// TPXBasExecException with Throw, naming this factory's own source file and line.
class KLDTPXBAS_API TPXBasExcDefaultFactory : public TPXBasExceptionFactory {
 public:
  ~TPXBasExcDefaultFactory() override;
  /// Throws a TPXBasPatternException of offset and message.
  [[noreturn]] void throwPatternException(int offset, const char* message) const override;
  /// Throws a TPXBasExecException of count.
  [[noreturn]] void throwExecException(int count) const override;
};

class TPXBasExceptionModelSingleton;
// The model's one instance lives in the library; clients refer to the library's copy.
extern template class KLDTPXBAS_API omi_SingletonBase<TPXBasExceptionModelSingleton>;
extern template class KLDTPXBAS_API omi_Singleton<TPXBasExceptionModelSingleton>;

/// Holds the installed factory (owned; null when none). Created on first use without a lock
/// and destroyed by the exceptions module's finalise: change it only while the process is
/// single-threaded. Reach it through TPXBasExceptionModel.
class KLDTPXBAS_API TPXBasExceptionModelSingleton
    : public omi_Singleton<TPXBasExceptionModelSingleton> {
 public:
  /// Deletes the installed factory, if any, and installs factory (may be null), taking
  /// ownership. Always true. Never install the same object twice.
  bool setBehavior(TPXBasExceptionFactory* factory);
  /// @{
  /// Forwards to the installed factory; whatever it throws passes through untouched. Without
  /// a factory the call is a caller error: it throws TPXBasAssertException "factory != 0".
  void throwExecException(int count) const;
  void throwPatternException(int offset, const char* message) const;
  /// @}
  /// The installed factory, or null.
  const TPXBasExceptionFactory* factory() const { return m_factory; }

 private:
  friend class omi_Singleton<TPXBasExceptionModelSingleton>;
  friend class omi_SingletonBase<TPXBasExceptionModelSingleton>;
  TPXBasExceptionModelSingleton();
  /// Deletes a factory still installed.
  ~TPXBasExceptionModelSingleton();
  TPXBasExceptionModelSingleton(const TPXBasExceptionModelSingleton&) = delete;
  TPXBasExceptionModelSingleton& operator=(const TPXBasExceptionModelSingleton&) = delete;

  TPXBasExceptionFactory* m_factory = nullptr;
};

/// Static face of the model: each function creates the model on first use and forwards.
///
///   TPXBasExceptionModel::setBehavior(new MyFactory);   // the model owns it from now on
///   TPXBasExceptionModel::throwExecException(5);        // throws what MyFactory throws
class KLDTPXBAS_API TPXBasExceptionModel {
 public:
  /// TPXBasExceptionModelSingleton::setBehavior on the model.
  static bool setBehavior(TPXBasExceptionFactory* factory);
  /// TPXBasExceptionModelSingleton::throwExecException on the model.
  static void throwExecException(int count);
  /// TPXBasExceptionModelSingleton::throwPatternException on the model.
  static void throwPatternException(int offset, const char* message);
};

#endif  // TPXBASEXCEPTIONMODEL_H
