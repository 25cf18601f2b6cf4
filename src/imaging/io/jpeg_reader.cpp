// JPEG through libjpeg-turbo, row by row.
#include <algorithm>
#include <array>
#include <cstring>

#include "imaging/io/exif.h"
#include "imaging/io/jpeg_common.h"
#include "imaging/io/readers.h"

namespace skarnel::io {
namespace {

/// More scans than any encoder makes; each costs a walk over the whole picture.
constexpr int kMaxScans = 100;

constexpr std::array<std::uint8_t, 6> kExifMark = {'E', 'x', 'i', 'f', 0, 0};
constexpr std::string_view kProfileMark{"ICC_PROFILE\0", 12};

/// What may stand in front of the picture and behind it: hundreds of markers of their full length.
/// The library looks for each marker byte by byte, in a file of nothing but holes for minutes.
constexpr std::size_t kMostMarkerBytes = std::size_t{64} << 20;

/// The codes of a sample are at most 27 bits; stuffed bytes and the corrections of later scans are
/// a small part of that in any file.
constexpr std::size_t kMostBytesASample = 4;

/// The bytes of a file that can belong to a picture of this size, markers included.
std::size_t mostBytesOf(const jpeg_decompress_struct& info) {
    constexpr std::size_t kMostInABlock = 32;  // samples in a row or column of coded units
    const std::size_t samples = (info.image_width + kMostInABlock) *
                                (info.image_height + kMostInABlock) *
                                static_cast<std::size_t>(info.num_components);
    return kMostMarkerBytes + kMostBytesASample * samples;
}

/// Counts the scans by walking the markers, before the library reserves the coefficients of a
/// progressive picture: a few kilobytes can declare thousands of scans over gigabytes.
bool hasTooManyScans(ByteView bytes) {
    constexpr std::uint8_t kEndOfImage = 0xD9;
    int scans = 0;
    std::size_t at = 2;
    while (at + 4 <= bytes.size()) {
        const auto* mark = static_cast<const std::uint8_t*>(
            std::memchr(bytes.data() + at, 0xFF, bytes.size() - at - 1));
        if (mark == nullptr) break;
        at = static_cast<std::size_t>(mark - bytes.data()) + 1;
        const std::uint8_t code = bytes[at];
        if (code == kEndOfImage) break;
        if (code == 0xDA && ++scans > kMaxScans) return true;
        const bool hasLength = code >= 0xC0 && code != 0xFF && !(code >= 0xD0 && code <= 0xD9);
        if (hasLength && at + 3 <= bytes.size()) {
            at += 1 + (std::size_t{bytes[at + 1]} << 8 | bytes[at + 2]);
        }
    }
    return false;
}

/// Warnings that mean the picture itself is incomplete or wrong. Stray bytes between markers and
/// unusual marker contents are common in good files and cost nothing.
bool isDamage(int warning) {
    switch (warning) {
        case JWRN_ARITH_BAD_CODE:
        case JWRN_BOGUS_PROGRESSION:
        case JWRN_HIT_MARKER:
        case JWRN_HUFF_BAD_CODE:
        case JWRN_JPEG_EOF:
        case JWRN_MUST_RESYNC:
        case JWRN_TOO_MUCH_DATA:
            return true;
        default:
            return false;
    }
}

class JpegDecoder {
  public:
    explicit JpegDecoder(ByteView bytes) : bytes_(bytes) {
        info_.err = &errors_.base;
        errors_.base.emit_message = [](j_common_ptr info, int level) {
            if (level < 0 && isDamage(info->err->msg_code)) info->err->error_exit(info);
        };
        created_ = guarded(errors_, [this] { jpeg_create_decompress(&info_); });
        source_.next_input_byte = bytes.data();
        showUpTo(kMostMarkerBytes);
        source_.init_source = [](j_decompress_ptr) {};
        source_.term_source = [](j_decompress_ptr) {};
        source_.resync_to_restart = jpeg_resync_to_restart;
        source_.fill_input_buffer = [](j_decompress_ptr info) -> boolean {
            ERREXIT(info, JERR_INPUT_EOF);
            return FALSE;
        };
        source_.skip_input_data = [](j_decompress_ptr info, long count) {
            const auto bytesToSkip = static_cast<std::size_t>(std::max(count, 0L));
            if (bytesToSkip > info->src->bytes_in_buffer) ERREXIT(info, JERR_INPUT_EOF);
            info->src->next_input_byte += bytesToSkip;
            info->src->bytes_in_buffer -= bytesToSkip;
        };
        progress_.progress_monitor = [](j_common_ptr info) {
            if (reinterpret_cast<j_decompress_ptr>(info)->input_scan_number > kMaxScans) {
                ERREXIT(info, JERR_BAD_PROGRESSION);
            }
        };
    }
    ~JpegDecoder() { jpeg_destroy_decompress(&info_); }
    JpegDecoder(const JpegDecoder&) = delete;
    JpegDecoder& operator=(const JpegDecoder&) = delete;

    Error error() const { return errors_.error(); }
    const jpeg_decompress_struct& info() const { return info_; }

    bool readHeader() {
        if (!created_) return false;
        info_.src = &source_;
        info_.progress = &progress_;
        return guarded(errors_, [this] {
            jpeg_save_markers(&info_, JPEG_APP0 + 1, 0xFFFF);
            jpeg_save_markers(&info_, JPEG_APP0 + 2, 0xFFFF);
            jpeg_read_header(&info_, TRUE);
            const bool inks =
                info_.jpeg_color_space == JCS_CMYK || info_.jpeg_color_space == JCS_YCCK;
            info_.out_color_space = inks ? JCS_CMYK : JCS_EXT_RGBA;
            showUpTo(mostBytesOf(info_));
        });
    }

    /// After the header: whether a picture whose scans have to be gathered has too many.
    bool hasTooManyScans() {
        return jpeg_has_multiple_scans(&info_) != FALSE &&
               io::hasTooManyScans(bytes_.first(shownBytes()));
    }

    /// The first call does what has to be done before the first row.
    bool readRows(MutablePixelView view) {
        return guarded(errors_, [this, view] {
            if (!started_) {
                started_ = true;
                jpeg_start_decompress(&info_);
            }
            constexpr int kRows = 16;
            JSAMPROW rows[kRows];
            for (int first = 0; first < view.height;) {
                const int count = std::min(kRows, view.height - first);
                for (int i = 0; i < count; ++i) rows[i] = view.row(first + i);
                first += static_cast<int>(
                    jpeg_read_scanlines(&info_, rows, static_cast<JDIMENSION>(count)));
            }
        });
    }

    bool finish() {
        showUpTo(seenBytes() + kMostMarkerBytes);
        return guarded(errors_, [this] { jpeg_finish_decompress(&info_); });
    }

  private:
    std::size_t seenBytes() const {
        return static_cast<std::size_t>(source_.next_input_byte - bytes_.data());
    }
    std::size_t shownBytes() const { return seenBytes() + source_.bytes_in_buffer; }
    /// The library takes the file to end there; never before what it has seen.
    void showUpTo(std::size_t size) {
        source_.bytes_in_buffer = std::min(size, bytes_.size()) - seenBytes();
    }

    ByteView bytes_;
    JpegErrors errors_;
    jpeg_decompress_struct info_{};
    jpeg_source_mgr source_{};
    jpeg_progress_mgr progress_{};
    bool created_ = false;
    bool started_ = false;
};

/// Puts the numbered pieces of a profile together; empty when one is missing or given twice.
Bytes assembleProfile(const jpeg_decompress_struct& info) {
    std::array<const jpeg_marker_struct*, 256> pieces{};
    std::size_t count = 0;
    constexpr std::size_t kHead = 14;
    for (const auto* marker = info.marker_list; marker != nullptr; marker = marker->next) {
        if (marker->marker != JPEG_APP0 + 2 || marker->data_length < kHead ||
            std::memcmp(marker->data, kProfileMark.data(), kProfileMark.size()) != 0) {
            continue;
        }
        const std::size_t number = marker->data[12];
        if (number == 0 || pieces[number] != nullptr) return {};
        pieces[number] = marker;
        count = std::max<std::size_t>(count, marker->data[13]);
    }
    Bytes profile;
    for (std::size_t i = 1; i <= count; ++i) {
        if (pieces[i] == nullptr) return {};
        profile.insert(profile.end(), pieces[i]->data + kHead,
                       pieces[i]->data + pieces[i]->data_length);
    }
    return profile;
}

void readMarkers(const jpeg_decompress_struct& info, SourcePicture& picture) {
    ExifFacts facts;
    for (const auto* marker = info.marker_list; marker != nullptr; marker = marker->next) {
        if (marker->marker == JPEG_APP0 + 1 && marker->data_length > kExifMark.size() &&
            std::memcmp(marker->data, kExifMark.data(), kExifMark.size()) == 0) {
            facts =
                readExif({marker->data + kExifMark.size(), marker->data_length - kExifMark.size()},
                         picture.properties);
            break;
        }
    }
    picture.orientation = facts.orientation;
    picture.profile = assembleProfile(info);
    setResolution(picture.properties, facts.dpiHorizontal, facts.dpiVertical);
    if (info.saw_JFIF_marker != 0 && info.density_unit != 0) {
        const double perInch = info.density_unit == 2 ? 2.54 : 1;
        setResolution(picture.properties, info.X_density * perInch, info.Y_density * perInch);
    }
}

/// Programs that write the Adobe marker store inks inverted, as 255 = none.
void invertInks(MutablePixelView view) {
    for (int y = 0; y < view.height; ++y) {
        std::uint8_t* row = view.row(y);
        for (std::size_t i = 0; i < std::size_t{4} * view.width; ++i) row[i] = 255 - row[i];
    }
}

class JpegRows : public SourceRows {
  public:
    explicit JpegRows(ByteView bytes) : decoder_(bytes) {}

    JpegDecoder& decoder() { return decoder_; }

    Result<void> decode(MutablePixelView rows) override {
        if (!decoder_.readRows(rows)) return decoder_.error();
        const jpeg_decompress_struct& info = decoder_.info();
        if (info.out_color_space == JCS_CMYK && info.saw_Adobe_marker != 0) invertInks(rows);
        return {};
    }
    Result<void> finish() override {
        if (!decoder_.finish()) return decoder_.error();
        return {};
    }

  private:
    JpegDecoder decoder_;
};

}  // namespace

Result<SourcePicture> readJpeg(ByteView bytes, const DecodeLimits& limits) {
    if (auto library = jpegLibrary().need(); !library) return library.error();
    auto rows = std::make_unique<JpegRows>(bytes);
    if (!rows->decoder().readHeader()) return rows->decoder().error();
    const jpeg_decompress_struct& info = rows->decoder().info();
    if (auto error = checkPictureSize(info.image_width, info.image_height, limits)) return *error;
    if (rows->decoder().hasTooManyScans()) {
        return {ErrorCode::TooLarge, "The JPEG has more than 100 scans"};
    }
    SourcePicture picture(static_cast<int>(info.image_width), static_cast<int>(info.image_height),
                          std::move(rows));
    // The library lets go of the saved markers at the end of the picture.
    readMarkers(info, picture);
    std::string_view model = "RGB";
    if (info.out_color_space == JCS_CMYK) {
        picture.samples = Samples::Cmyk;
        model = "CMYK";
    } else if (info.jpeg_color_space == JCS_GRAYSCALE) {
        picture.samples = Samples::Gray;
        model = "Gray";
    }
    describePicture(picture, model, info.data_precision, false);
    return picture;
}

}  // namespace skarnel::io
