// KLDTPXBasCoreUtils.h: umbrella header; declares every exported class and function of the
// library and of the platform stand-ins it imports. A host needs no other include.
#ifndef KLDTPXBASCOREUTILS_H
#define KLDTPXBASCOREUTILS_H

// Platform stand-ins.
#include "DXLFatalError.h"
#include "DXLString.h"
#include "DXLUnicodeString.h"
#include "TPXBasAllocator.h"
#include "TPXBasErrorStack.h"
#include "TPXBasGenericsLib.h"
#include "TPXBasMemAllocator.h"
#include "TPXBasMemCacheManager.h"
#include "TPXBasPrfTrkLib.h"
#include "mem_Alloc.h"
#include "mem_Testing.h"
#include "mem_ToOs.h"
#include "omi_SingletonRegistry.h"

// Library frame.
#include "KLDTPXBasAssert.h"
#include "KLDTPXBasCoreUtilsC.h"
#include "KLDTPXBasCoreUtils_Lifecycle.h"
#include "KLDTPXBasExport.h"
#include "TPXBasAllocatorBase.h"
#include "TPXBasStringMode.h"
#include "atr_NatOrder.h"
#include "atr_String.h"
#include "atr_StringBase.h"
#include "atr_StringBasePrv.h"
#include "atr_tr.h"
#include "atr_translate.h"
#include "atr_utf8.h"
#include "cow_String.h"
#include "mem_AllocationOperators.h"
#include "omi_Singleton.h"

#endif  // KLDTPXBASCOREUTILS_H
