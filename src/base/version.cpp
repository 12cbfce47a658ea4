// The version number comes from the build (CMakeLists.txt's project version).
#include "base/version.h"

#ifndef QUARNEL_VERSION
#define QUARNEL_VERSION "unknown"
#endif

namespace quarnel {

const char* VersionNumber() { return QUARNEL_VERSION; }

}  // namespace quarnel
