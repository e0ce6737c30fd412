// The shape of a plug-in's interface table, the result codes of its calls, and the book-keeping of the instances that
// are alive, which "platform/PlugInInstances.h" reads.
#pragma once

#include <CoreFoundation/CFUUID.h>

using HRESULT = SInt32;
using ULONG = UInt32;
using LPVOID = void*;
using REFIID = CFUUIDBytes;

#define S_OK static_cast<HRESULT>(0x00000000)
#define E_NOINTERFACE static_cast<HRESULT>(0x80000004)
#define SUCCEEDED(status) (static_cast<HRESULT>(status) >= 0)

#define STDMETHODCALLTYPE

// The first entries of every interface table.
#define IUNKNOWN_C_GUTS                                                                                \
    void* _reserved;                                                                                   \
    HRESULT(STDMETHODCALLTYPE* QueryInterface)(void* thisPointer, REFIID interfaceID, LPVOID* result); \
    ULONG(STDMETHODCALLTYPE* AddRef)(void* thisPointer);                                               \
    ULONG(STDMETHODCALLTYPE* Release)(void* thisPointer)

#define IUnknownUUID                                                                                                \
    CFUUIDGetConstantUUIDWithBytes(kCFAllocatorSystemDefault, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xC0, \
                                   0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46)

CF_EXTERN_C_BEGIN

// One more, one fewer instance of that factory. Safe on any thread.
CF_EXPORT void CFPlugInAddInstanceForFactory(CFUUIDRef factory);
CF_EXPORT void CFPlugInRemoveInstanceForFactory(CFUUIDRef factory);

CF_EXTERN_C_END
