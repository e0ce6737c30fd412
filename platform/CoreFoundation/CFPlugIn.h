// Book-keeping of the plug-in instances that are alive. "platform/PlugInInstances.h" reads it.
#pragma once

#include <CoreFoundation/CFPlugInCOM.h>
#include <CoreFoundation/CFUUID.h>

CF_EXTERN_C_BEGIN

// One more, one fewer instance of that factory. Safe on any thread.
CF_EXPORT void CFPlugInAddInstanceForFactory(CFUUIDRef factory);
CF_EXPORT void CFPlugInRemoveInstanceForFactory(CFUUIDRef factory);

CF_EXTERN_C_END
