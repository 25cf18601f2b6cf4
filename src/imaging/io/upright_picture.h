// A picture on its way from the form that its file has to the one that decodeImage promises.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "imaging/cgimage.h"
#include "imaging/io/color_profile.h"
#include "imaging/io/image_io.h"
#include "imaging/io/readers.h"
#include "util/log/result.h"

namespace skarnel::io {

/// Gives the rows of a picture in sRGB, premultiplied and upright: a few at a time where the
/// reader decodes them so and the picture stands upright in its file, so that nobody has to hold
/// all of them; otherwise after the whole picture has been decoded. The file's bytes must outlive
/// it. Its functions throw std::bad_alloc.
class UprightPicture {
  public:
    static Result<UprightPicture> make(SourcePicture picture, std::string_view type);

    int width() const { return width_; }
    int height() const { return height_; }
    const std::string& type() const { return type_; }

    /// The next rows, at least one, at most 256 KB of them unless a row alone is larger; valid
    /// until the next call. Not to be called after the last. Rows that are decoded by this call are
    /// decoded into `room` where that is large enough for them.
    Result<PixelView> next(std::span<std::uint8_t> room = {});

    /// After the last row: what is left of the file is read, and what it says is given back.
    Result<ImageProperties> finish();

    /// Instead of next and finish.
    Result<DecodedImage> whole() &&;

  private:
    UprightPicture(SourcePicture picture, ColorConversion conversion, std::string_view type);

    /// Decodes all rows into memory that stays, and turns them.
    Result<void> decodeWhole();
    Result<void> decodeRows(MutablePixelView rows);
    void settleRows(MutablePixelView rows) const;

    SourcePicture source_;
    ColorConversion conversion_;
    std::string type_;
    int width_;
    int height_;
    int nextRow_ = 0;                    // of the stored picture, then of the upright one
    std::vector<std::uint8_t> scratch_;  // rows of a picture that is not held
};

/// Chooses the reader by the first bytes. Errors and exceptions as those of the reader.
Result<UprightPicture> openUpright(ByteView bytes, const DecodeLimits& limits);

}  // namespace skarnel::io
