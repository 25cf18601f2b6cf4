#include "util/log/system_error.h"

#include <cstring>

namespace skarnel {

std::string describeError(int errorNumber) {
    const char* sentence = ::strerrordesc_np(errorNumber);
    return sentence ? sentence : "Unknown error " + std::to_string(errorNumber);
}

}  // namespace skarnel
