// The shape of a plug-in's interface table and the result codes of its calls.
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
