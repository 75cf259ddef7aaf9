/// @file mem_AllocationOperators.h
/// The allocation operators every heap class of the library uses.
#ifndef MEM_ALLOCATIONOPERATORS_H
#define MEM_ALLOCATIONOPERATORS_H

#include "KLDTPXBasAllocExport.h"
#include "mem_Alloc.h"

#include <cstddef>
#include <new>

/// Base of every heap class of the library: `new` of a derived class draws from the host
/// allocation service (mem_OperatorNewThrow, which throws std::bad_alloc) and `delete` gives
/// the block back with mem_Free. No fields, no virtual functions: deriving costs nothing.
class mem_AllocationOperators {
 public:
  /// A block from mem_OperatorNewThrow; throws std::bad_alloc when memory runs out.
  static void* operator new(std::size_t size) { return mem_OperatorNewThrow(size); }
  /// Gives the block back with mem_Free.
  static void operator delete(void* block) { mem_Free(block); }
  /// Placement form, which the class operator above would otherwise hide.
  static void* operator new(std::size_t, void* where) noexcept { return where; }
  /// Placement delete, called only when a constructor run by placement new throws: nothing
  /// to free.
  static void operator delete(void*, void*) noexcept {}
};

/// The same for client code's tiny objects, arrays included.
class mem_AllocationOperatorsTiny {
 public:
  /// @{
  /// Objects and arrays from mem_OperatorNewTinyThrow; throws std::bad_alloc when memory
  /// runs out.
  static void* operator new(std::size_t size) { return mem_OperatorNewTinyThrow(size); }
  static void* operator new[](std::size_t size) { return mem_OperatorNewTinyThrow(size); }
  /// @}
  /// @{
  /// Gives an object or an array back with mem_Free.
  static void operator delete(void* block) { mem_Free(block); }
  static void operator delete[](void* block) { mem_Free(block); }
  /// @}
  /// Placement form, which the class operators above would otherwise hide.
  static void* operator new(std::size_t, void* where) noexcept { return where; }
  /// Placement delete: nothing to free.
  static void operator delete(void*, void*) noexcept {}
};

/// Tag of the built-in array allocation: `new (mem_BuiltInAlloc{}) int[n]` draws the array
/// from mem_OperatorNewThrowBuiltin; give it back with mem_deleteBuiltIn, never delete[].
struct mem_BuiltInAlloc {};

/// An array of a built-in type from mem_OperatorNewThrowBuiltin; throws std::bad_alloc
/// when memory runs out.
inline void* operator new[](std::size_t size, mem_BuiltInAlloc) {
  return mem_OperatorNewThrowBuiltin(size);
}
/// Called only if an element constructor throws; built-in elements never do.
inline void operator delete[](void* block, mem_BuiltInAlloc) noexcept { mem_Free(block); }

/// @{
/// Releases an array made with mem_BuiltInAlloc; null is passed on and ignored.
inline void mem_deleteBuiltIn(char* array) { mem_Free(array); }
inline void mem_deleteBuiltIn(unsigned short* array) { mem_Free(array); }
inline void mem_deleteBuiltIn(int* array) { mem_Free(array); }
inline void mem_deleteBuiltIn(unsigned int* array) { mem_Free(array); }
/// @}
/// Arrays of pointers to a class (the pointed-to objects are not touched).
template <class T>
inline void mem_deleteBuiltIn(T** array) {
  mem_Free(array);
}

#endif  // MEM_ALLOCATIONOPERATORS_H
