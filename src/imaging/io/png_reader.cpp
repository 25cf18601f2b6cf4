// PNG through libpng: every colour type and depth to 8-bit RGBA.
#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "imaging/io/exif.h"
#include "imaging/io/png_library.h"
#include "imaging/io/readers.h"
#include "util/log/message.h"

namespace skarnel::io {
namespace {

/// Bounds for what a chunk may unpack to, far above any honest profile or comment.
constexpr png_alloc_size_t kMaxChunkBytes = 32U << 20U;
constexpr png_uint_32 kMaxChunks = 1000;
constexpr double kInchesPerMetre = 39.37007874015748;

class PngDecoder {
  public:
    explicit PngDecoder(ByteView bytes) : rest_(bytes) {
        png_ = png_create_read_struct_2(PNG_LIBPNG_VER_STRING, this, onError, onWarning, this,
                                        onAllocate, onFree);
        if (png_ != nullptr) info_ = png_create_info_struct(png_);
    }
    ~PngDecoder() { png_destroy_read_struct(&png_, &info_, nullptr); }
    PngDecoder(const PngDecoder&) = delete;
    PngDecoder& operator=(const PngDecoder&) = delete;

    bool readHeader() {
        if (info_ == nullptr) return hadMemory();
        if (setjmp(png_jmpbuf(png_)) != 0) return false;
        png_set_read_fn(png_, this, onRead);
        png_set_user_limits(png_, INT32_MAX / 4, INT32_MAX / 4);
        png_set_chunk_malloc_max(png_, kMaxChunkBytes);
        png_set_chunk_cache_max(png_, kMaxChunks);
        png_read_info(png_, info_);
        return hadMemory();
    }

    /// Samples are scaled and never corrected for gAMA or cHRM: viewers of photos ignore both.
    bool beginRows() {
        if (setjmp(png_jmpbuf(png_)) != 0) return false;
        png_set_expand(png_);
        png_set_scale_16(png_);
        png_set_gray_to_rgb(png_);
        png_set_add_alpha(png_, 0xFF, PNG_FILLER_AFTER);
        passes_ = png_set_interlace_handling(png_);
        png_read_update_info(png_, info_);
        if (png_get_rowbytes(png_, info_) != std::size_t{4} * png_get_image_width(png_, info_)) {
            png_error(png_, "unexpected row size");
        }
        return true;
    }

    /// The next rows; all of them at once for an interlaced picture.
    bool readRows(MutablePixelView view) {
        rows_.resize(static_cast<std::size_t>(view.height));
        for (int y = 0; y < view.height; ++y) rows_[static_cast<std::size_t>(y)] = view.row(y);
        if (setjmp(png_jmpbuf(png_)) != 0) return false;
        for (int pass = 0; pass < passes_; ++pass) {
            png_read_rows(png_, rows_.data(), nullptr, static_cast<png_uint_32>(view.height));
        }
        return true;
    }

    bool readEnd() {
        if (setjmp(png_jmpbuf(png_)) != 0) return false;
        png_read_end(png_, info_);
        return hadMemory();
    }

    png_structp png() const { return png_; }
    png_infop info() const { return info_; }
    Error error() const {
        return {lackedMemory_ ? ErrorCode::OutOfMemory : ErrorCode::Damaged, message_.data()};
    }

  private:
    static void onError(png_structp png, png_const_charp text) {
        static_cast<PngDecoder*>(png_get_error_ptr(png))->fail(text);
        png_longjmp(png, 1);
    }
    static void onWarning(png_structp, png_const_charp) {}
    static void onRead(png_structp png, png_bytep target, std::size_t count) {
        auto* self = static_cast<PngDecoder*>(png_get_io_ptr(png));
        if (count > self->rest_.size()) png_error(png, marked("The file ends too early"));
        std::memcpy(target, self->rest_.data(), count);
        self->rest_ = self->rest_.subspan(count);
    }
    static png_voidp onAllocate(png_structp png, png_alloc_size_t size) {
        void* memory = std::malloc(size);
        if (memory == nullptr) static_cast<PngDecoder*>(png_get_mem_ptr(png))->lackedMemory_ = true;
        return memory;
    }
    static void onFree(png_structp, png_voidp memory) { std::free(memory); }
    /// A chunk that the library has no memory for it leaves out, with a warning alone: a profile,
    /// or how the picture has to be turned.
    bool hadMemory() {
        if (lackedMemory_) fail(marked("Not enough memory"));
        return !lackedMemory_;
    }
    bool fail(const char* text) {
        std::snprintf(message_.data(), message_.size(), "%s", text);
        return false;
    }

    ByteView rest_;
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
    std::vector<png_bytep> rows_;
    int passes_ = 1;
    bool lackedMemory_ = false;
    std::array<char, 160> message_{};
};

class PngRows : public SourceRows {
  public:
    explicit PngRows(ByteView bytes) : decoder_(bytes) {}

    PngDecoder& decoder() { return decoder_; }
    Error error() const { return decoder_.error(); }

    Result<void> decode(MutablePixelView rows) override {
        if (!decoder_.readRows(rows)) return error();
        return {};
    }
    Result<void> finish() override {
        if (!decoder_.readEnd()) return error();
        return {};
    }

  private:
    PngDecoder decoder_;
};

struct ChunkOrder {
    bool isWhole = false;          // the last chunk is there and every one lies within the file
    bool hasExifAtTheEnd = false;  // after the pixels, where its orientation comes late
};

bool isLetter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

/// The library takes memory for a whole chunk, two gigabytes where its length says so, before it
/// finds that the file is shorter.
ChunkOrder orderOfChunks(ByteView bytes) {
    constexpr std::size_t kSignatureBytes = 8;
    constexpr std::size_t kAroundData = 12;  // length, type and check
    ChunkOrder order;
    bool pixelsBegan = false;
    for (std::size_t at = kSignatureBytes; bytes.size() >= at + kAroundData;) {
        const std::uint8_t* chunk = bytes.data() + at;
        const std::size_t length = std::size_t{chunk[0]} << 24 | std::size_t{chunk[1]} << 16 |
                                   std::size_t{chunk[2]} << 8 | chunk[3];
        if (length > bytes.size() - at - kAroundData) return order;
        const std::string_view type(reinterpret_cast<const char*>(chunk) + 4, 4);
        // The library refuses such a type too, but not before all of a file of holes was walked.
        if (!std::all_of(type.begin(), type.end(), isLetter)) return order;
        pixelsBegan = pixelsBegan || type == "IDAT";
        order.hasExifAtTheEnd = order.hasExifAtTheEnd || (pixelsBegan && type == "eXIf");
        order.isWhole = type == "IEND";
        if (order.isWhole) return order;
        at += kAroundData + length;
    }
    return order;
}

void readProfile(const PngDecoder& decoder, SourcePicture& picture) {
    png_charp name = nullptr;
    int method = 0;
    png_bytep data = nullptr;
    png_uint_32 size = 0;
    if (png_get_iCCP(decoder.png(), decoder.info(), &name, &method, &data, &size) != 0) {
        picture.profile.assign(data, data + size);
    }
}

void readResolution(const PngDecoder& decoder, SourcePicture& picture) {
    png_uint_32 x = 0;
    png_uint_32 y = 0;
    int unit = 0;
    if (png_get_pHYs(decoder.png(), decoder.info(), &x, &y, &unit) != 0 &&
        unit == PNG_RESOLUTION_METER) {
        setResolution(picture.properties, x / kInchesPerMetre, y / kInchesPerMetre);
    }
}

void readExifChunk(const PngDecoder& decoder, SourcePicture& picture) {
    png_bytep data = nullptr;
    png_uint_32 size = 0;
    if (png_get_eXIf_1(decoder.png(), decoder.info(), &size, &data) == 0) return;
    const ExifFacts facts = readExif({data, size}, picture.properties);
    picture.orientation = facts.orientation;
    setResolution(picture.properties, facts.dpiHorizontal, facts.dpiVertical);
}

/// Whether the rows can be had before everything that is known of them.
bool readsRowByRow(const PngDecoder& decoder, const ChunkOrder& order) {
    return png_get_interlace_type(decoder.png(), decoder.info()) == PNG_INTERLACE_NONE &&
           !order.hasExifAtTheEnd;
}

Result<SourcePicture> readAtOnce(PngRows& rows, int width, int height) {
    auto pixels = PixelBuffer::uninitialized(width, height);
    if (!pixels) return {ErrorCode::OutOfMemory, "Not enough memory for the picture"};
    SourcePicture picture(*std::move(pixels));
    if (auto decoded = rows.decode(picture.pixels.view()); !decoded) return decoded.error();
    if (auto ended = rows.finish(); !ended) return ended.error();
    return picture;
}

/// Takes the rows along unless they are read here.
Result<SourcePicture> beginPicture(std::unique_ptr<PngRows>& rows, const ChunkOrder& order,
                                   int width, int height) {
    if (!readsRowByRow(rows->decoder(), order)) return readAtOnce(*rows, width, height);
    return SourcePicture(width, height, std::move(rows));
}

}  // namespace

Result<SourcePicture> readPng(ByteView bytes, const DecodeLimits& limits) {
    if (auto library = pngLibrary().need(); !library) return library.error();
    const ChunkOrder order = orderOfChunks(bytes);
    if (!order.isWhole) return {ErrorCode::Damaged, "The file ends too early"};
    auto rows = std::make_unique<PngRows>(bytes);
    PngDecoder& decoder = rows->decoder();
    if (!decoder.readHeader()) return rows->error();
    const auto width = png_get_image_width(decoder.png(), decoder.info());
    const auto height = png_get_image_height(decoder.png(), decoder.info());
    const int colorType = png_get_color_type(decoder.png(), decoder.info());
    const int depth = png_get_bit_depth(decoder.png(), decoder.info());
    const bool hasAlpha = (colorType & PNG_COLOR_MASK_ALPHA) != 0 ||
                          png_get_valid(decoder.png(), decoder.info(), PNG_INFO_tRNS) != 0;
    if (auto error = checkPictureSize(width, height, limits)) return *error;
    if (!decoder.beginRows()) return rows->error();
    auto picture = beginPicture(rows, order, static_cast<int>(width), static_cast<int>(height));
    if (!picture) return picture;

    const bool gray = (colorType & PNG_COLOR_MASK_COLOR) == 0;
    picture->samples = gray ? Samples::Gray : Samples::Rgb;
    picture->alpha = hasAlpha ? Alpha::Straight : Alpha::Opaque;
    readProfile(decoder, *picture);
    readExifChunk(decoder, *picture);
    readResolution(decoder, *picture);
    describePicture(*picture, gray ? "Gray" : "RGB", depth, hasAlpha);
    return picture;
}

}  // namespace skarnel::io
