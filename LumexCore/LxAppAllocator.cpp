// Compiled into every Windows executable that links Lumex::LumexCore.
//
// Each Windows module carries its own (static) C++ runtime, so the DLL's replacement of operator new does not reach
// the application. This file gives the application the same replacement, forwarding to the DLL's tracked
// allocator: objects created on one side of the DLL boundary can be deleted on the other, and the statistics see
// every allocation.
#include "Common/LxMemory.h"

#include "Common/LxGlobalNewDelete.inl"
