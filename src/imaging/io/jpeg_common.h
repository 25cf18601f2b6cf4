// Shared by the JPEG reader and writer: libjpeg's errors as values instead of exits.
#pragma once

#include <csetjmp>

#include "imaging/io/jpeg_library.h"
#include "util/log/result.h"

namespace skarnel::io {

/// libjpeg reports a failure by a call that must not return. `guarded` gives it a place to land:
/// the function it runs must hold no object with a destructor across a call into the library.
struct JpegErrors {
    jpeg_error_mgr base;
    std::jmp_buf landing;
    int code = 0;
    char message[JMSG_LENGTH_MAX] = {};

    JpegErrors() {
        jpeg_std_error(&base);
        base.error_exit = [](j_common_ptr info) {
            auto* self = reinterpret_cast<JpegErrors*>(info->err);
            self->code = info->err->msg_code;
            info->err->format_message(info, self->message);
            std::longjmp(self->landing, 1);
        };
        base.output_message = [](j_common_ptr) {};
    }

    Error error() const {
        return {code == JERR_OUT_OF_MEMORY ? ErrorCode::OutOfMemory : ErrorCode::Damaged, message};
    }
};

/// Not inlined, so that no variable of a caller lives across the landing in a register.
template <typename Work>
[[gnu::noinline]] bool guarded(JpegErrors& errors, Work work) {
    if (setjmp(errors.landing) != 0) return false;
    work();
    return true;
}

}  // namespace skarnel::io
