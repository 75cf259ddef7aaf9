// kld_ModuleHook.h: the counting shape shared by every initialise and finalise hook.
#ifndef KLD_MODULEHOOK_H
#define KLD_MODULEHOOK_H

namespace kld {

/// Raises count; on its first rise (0 to 1) adds 1 to the caller's tally and returns true:
/// the caller then does its set-up.
inline bool EnterUnit(int& count, int& tally) {
  if (count++ != 0) return false;
  ++tally;
  return true;
}

/// Lowers count; when it reaches 0 subtracts 1 from the tally and returns true: the caller
/// then does its tear-down. Unbalanced calls are not guarded: the count goes below 0.
inline bool LeaveUnit(int& count, int& tally) {
  if (--count != 0) return false;
  --tally;
  return true;
}

}  // namespace kld

#endif  // KLD_MODULEHOOK_H
