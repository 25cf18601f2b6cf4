// Stands in the helper's place and answers as if all were well, by the number of pixels that it is
// asked for: 1 a letter, 2 a picture of another size, 3 a file without its last byte, 4 a picture
// of another type; else a right file, if of a clear picture.
#include <unistd.h>

#include <array>
#include <charconv>

#include "decoder/answer.h"
#include "imaging/io/decoder_protocol.h"
#include "imaging/io/encoder_protocol.h"
#include "imaging/io/image_io.h"
#include "imaging/io/picture_rows.h"
#include "imaging/io/writers.h"

using namespace skarnel;

namespace {

Bytes clearPicture(int width, std::string_view type) {
    const CGImage image(*PixelBuffer::zeroed(width, 1));
    io::ImageRows rows(image);
    return *io::writeWithLibrary(rows, type, {});
}

Bytes answerTo(int pixels, std::string_view type) {
    if (pixels == 1) return {'x'};
    if (pixels == 2) return clearPicture(3, type);
    if (pixels == 4) return clearPicture(4, type == kUTTypeWebP ? kUTTypeJPEG2000 : kUTTypeWebP);
    Bytes file = clearPicture(pixels, type);
    if (pixels == 3) file.pop_back();
    return file;
}

}  // namespace

int main(int count, char** arguments) {
    std::string_view job = count == 2 ? arguments[1] : "";
    if (!job.starts_with(io::kEncodeArgument)) return 2;
    job.remove_prefix(io::kEncodeArgument.size());
    int pixels = 0;
    const char* end = std::from_chars(job.data(), job.data() + job.size(), pixels).ptr;
    const std::string_view type(end + 1,
                                static_cast<std::size_t>(job.data() + job.size() - end - 1));
    std::array<char, 4096> request;
    while (::read(io::kPictureDescriptor, request.data(), request.size()) > 0) continue;
    return sendEncoded(answerTo(pixels, type)) ? 0 : 1;
}
