#include "util/package/skarnel_util_version.h"

namespace skarnel {

const char* skarnelUtilVersion() {
    return SKARNEL_UTIL_VERSION;
}

}  // namespace skarnel
