#include "imaging/io/decoder_protocol.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace skarnel::io {
namespace {

ImageProperties manyProperties() {
    return {{"PixelWidth", std::int64_t{-7}},
            {"DPIWidth", 299.9994},
            {"{TIFF}.Make", std::string("Ca\xC3\xB6mera")},
            {"{Exif}.Block", Bytes{1, 0, 255}},
            {"empty", std::string()}};
}

TEST(DecoderProtocol, PropertiesSurviveTheJourney) {
    const Bytes packed = packProperties(kUTTypePNG, manyProperties());
    const auto unpacked = unpackProperties(packed);
    ASSERT_TRUE(unpacked);
    EXPECT_EQ(unpacked->type, kUTTypePNG);
    EXPECT_EQ(unpacked->properties, manyProperties());
}

TEST(DecoderProtocol, EveryPrefixOfTheTextIsRefusedOrShorter) {
    const Bytes packed = packProperties(kUTTypePNG, manyProperties());
    for (std::size_t size = 0; size < packed.size(); ++size) {
        const auto unpacked = unpackProperties(ByteView(packed).first(size));
        if (unpacked) {
            EXPECT_LT(unpacked->properties.size(), manyProperties().size()) << size;
        }
    }
}

TEST(DecoderProtocol, DamagedTextIsRefusedOrReadAsItStands) {
    const Bytes packed = packProperties(kUTTypePNG, manyProperties());
    std::mt19937 random(1);
    int refused = 0;
    constexpr int kRounds = 20000;
    for (int i = 0; i < kRounds; ++i) {
        Bytes damaged = packed;
        damaged[random() % damaged.size()] = static_cast<std::uint8_t>(random());
        const auto unpacked = unpackProperties(damaged);
        if (!unpacked) {
            EXPECT_EQ(unpacked.error().code, ErrorCode::Damaged);
            ++refused;
            continue;
        }
        // What was read is whole: it can be written and read again, and nothing has come to it.
        const Bytes again = packProperties(unpacked->type, unpacked->properties);
        EXPECT_LE(again.size(), damaged.size());
        const auto second = unpackProperties(again);
        ASSERT_TRUE(second);
        EXPECT_EQ(packProperties(second->type, second->properties), again);
    }
    EXPECT_GT(refused, 0);
    EXPECT_LT(refused, kRounds);
}

TEST(DecoderProtocol, TextOfAnUnknownTypeIsRefused) {
    EXPECT_FALSE(unpackProperties(packProperties("public.nothing", {})));
}

/// An answer as the helper would send it, and as it would not.
class Answer {
  public:
    Answer& record(RecordKind kind, std::uint32_t first, std::uint32_t second = 0) {
        const AnswerRecord record{kind, first, second};
        const auto* raw = reinterpret_cast<const std::uint8_t*>(&record);
        bytes_.insert(bytes_.end(), raw, raw + sizeof record);
        return *this;
    }
    Answer& data(const Bytes& more) {
        bytes_.insert(bytes_.end(), more.begin(), more.end());
        return *this;
    }
    Answer& rows(std::uint32_t count, std::size_t size, std::uint8_t value) {
        return record(RecordKind::Rows, count).data(Bytes(size, value));
    }
    Answer& done(const ImageProperties& properties = manyProperties()) {
        const Bytes text = packProperties(kUTTypePNG, properties);
        return record(RecordKind::Done, static_cast<std::uint32_t>(text.size())).data(text);
    }
    const Bytes& bytes() const { return bytes_; }

    Result<DecodedImage> receive(const DecodeLimits& limits = {1000}) const {
        return receive(bytes_, limits);
    }
    static Result<DecodedImage> receive(ByteView bytes, const DecodeLimits& limits) {
        Source source(bytes);
        return receiveAnswer(source, limits);
    }

  private:
    class Source : public AnswerSource {
      public:
        explicit Source(ByteView bytes) : left_(bytes) {}
        bool read(void* target, std::size_t size) override {
            if (size > left_.size()) return false;
            std::copy_n(left_.begin(), size, static_cast<std::uint8_t*>(target));
            left_ = left_.subspan(size);
            return true;
        }
        /// What the ring holds stands behind its record here.
        bool readFromRing(void* target, std::size_t size) override { return read(target, size); }
        bool isAtEnd() override { return left_.empty(); }

      private:
        ByteView left_;
    };

    Bytes bytes_;
};

/// 2 x 3 pixels: 8 bytes a row.
Answer goodAnswer() {
    Answer answer;
    answer.record(RecordKind::Picture, 2, 3).rows(1, 8, 11).rows(2, 16, 22).done();
    return answer;
}

TEST(DecoderAnswer, RowsThatComeInPiecesMakeThePicture) {
    const auto received = goodAnswer().receive();
    ASSERT_TRUE(received);
    EXPECT_EQ(received->image.width(), 2);
    ASSERT_EQ(received->image.height(), 3);
    EXPECT_EQ(received->image.pixels().row(0)[7], 11);
    EXPECT_EQ(received->image.pixels().row(1)[0], 22);
    EXPECT_EQ(received->image.pixels().row(2)[7], 22);
    EXPECT_EQ(received->properties, manyProperties());
    EXPECT_EQ(received->type, kUTTypePNG);
}

TEST(DecoderAnswer, RowsOfTheRingAndOfThePipeMakeOnePicture) {
    const auto received = Answer()
                              .record(RecordKind::Picture, 2, 3)
                              .record(RecordKind::RingRows, 2)
                              .data(Bytes(16, 11))
                              .rows(1, 8, 22)
                              .done()
                              .receive();
    ASSERT_TRUE(received);
    EXPECT_EQ(received->image.pixels().row(1)[7], 11);
    EXPECT_EQ(received->image.pixels().row(2)[0], 22);
}

TEST(DecoderAnswer, AReasonIsPassedOnWhereverItComes) {
    const Bytes text = {'b', 'a', 'd'};
    const auto code = static_cast<std::uint32_t>(ErrorCode::Unsupported);
    for (const int place : {0, 1, 2}) {
        Answer answer;
        if (place > 0) answer.record(RecordKind::Picture, 2, 3);
        if (place > 1) answer.rows(2, 16, 5);
        const auto received = answer.record(RecordKind::Failed, 3, code).data(text).receive();
        ASSERT_FALSE(received) << place;
        EXPECT_EQ(received.error().code, ErrorCode::Unsupported);
        EXPECT_EQ(received.error().message, "bad");
    }
    const auto unknown = Answer().record(RecordKind::Failed, 0, 4711).receive();
    ASSERT_FALSE(unknown);
    EXPECT_EQ(unknown.error().code, ErrorCode::Failed);
}

TEST(DecoderAnswer, AReasonIsShortAndFitForATerminal) {
    const auto passedOn = [](std::string_view text) {
        const auto size = static_cast<std::uint32_t>(text.size());
        Answer answer;
        answer.record(RecordKind::Failed, size).data(Bytes(text.begin(), text.end()));
        const auto received = answer.receive();
        return received ? "a picture" : received.error().message;
    };
    EXPECT_EQ(passedOn("\033]0;x\007\n\x7F"), "?]0;x???");
    EXPECT_EQ(passedOn("h\xC3\xB6he \xE2\x82\xAC \xF0\x9F\x99\x82"),
              "h\xC3\xB6he \xE2\x82\xAC \xF0\x9F\x99\x82");
    EXPECT_EQ(passedOn("\xC2\x9B"
                       "31m"),
              "?31m")
        << "a control of two bytes";
    EXPECT_EQ(passedOn("\xFF\xC3"), "??") << "no UTF-8";
    EXPECT_EQ(passedOn("\xC2\xA0"), "\xC2\xA0") << "a space of two bytes";
    EXPECT_EQ(passedOn("\x80z\xC1z\xF5z"), "?z?z?z") << "no first bytes";
    EXPECT_EQ(passedOn("\xE2\x82z\xF0z"), "??z?z") << "cut off by others";
    EXPECT_EQ(passedOn(std::string(1 << 20, 'a')), std::string(300, 'a'));
    std::string tooLong(299, 'a');
    const std::string whole = tooLong;
    tooLong.append("\xC3\xB6");
    EXPECT_EQ(passedOn(tooLong), whole) << "no half of a character";
}

/// A picture of one pixel with these properties.
Result<DecodedImage> pixelWith(const ImageProperties& properties) {
    return Answer().record(RecordKind::Picture, 1, 1).rows(1, 4, 0).done(properties).receive();
}

TEST(DecoderAnswer, TextsOfAPictureAreFitToBeShown) {
    const std::string longText(5000, 'a');
    const auto received = pixelWith({{"{TIFF}.Make", std::string("Ca\0m\033[2Jera\n", 12)},
                                     {"{TIFF}.Model", std::string("\xFFok\xE2\x80\xAE")},
                                     {"ImageDescription", longText}});
    ASSERT_TRUE(received);
    const ImageProperties& properties = received->properties;
    EXPECT_EQ(std::get<std::string>(properties.at("{TIFF}.Make")), "Ca?m?[2Jera?");
    EXPECT_EQ(std::get<std::string>(properties.at("{TIFF}.Model")), "?ok?");
    EXPECT_EQ(std::get<std::string>(properties.at("ImageDescription")), longText.substr(0, 1024));
}

TEST(DecoderAnswer, AKeyThatNoReaderGivesIsRefused) {
    for (const std::string& key : {std::string(), std::string("a\nb"), std::string("\xC3\xB6"),
                                   std::string("\x7F"), std::string(129, 'k')}) {
        EXPECT_FALSE(pixelWith({{key, 1.0}})) << key;
    }
    EXPECT_TRUE(pixelWith({{std::string(128, '~'), 1.0}}));
}

TEST(DecoderAnswer, EveryPrefixIsRefused) {
    const Answer answer = goodAnswer();
    for (std::size_t size = 0; size < answer.bytes().size(); ++size) {
        EXPECT_FALSE(Answer::receive(ByteView(answer.bytes()).first(size), {1000})) << size;
    }
}

TEST(DecoderAnswer, OneThatBreaksTheOrderIsRefused) {
    constexpr std::uint32_t kAll = 0xFFFFFFFF;
    constexpr auto kPicture = RecordKind::Picture;
    constexpr auto kRows = RecordKind::Rows;
    constexpr auto kRingRows = RecordKind::RingRows;
    struct Row {
        const char* name;
        Answer answer;
    };
    for (const Row& row : {
             Row{"no picture", Answer().done()},
             Row{"rows before the picture", Answer().rows(1, 8, 1)},
             Row{"no rows", Answer().record(kPicture, 2, 3).done()},
             Row{"a row too few", Answer().record(kPicture, 2, 3).rows(2, 16, 1).done()},
             Row{"a row too many", Answer().record(kPicture, 2, 3).rows(4, 32, 1).done()},
             Row{"a record of no rows", Answer().record(kPicture, 2, 3).record(kRows, 0)},
             Row{"rows beyond 31 bits", Answer().record(kPicture, 2, 3).record(kRows, kAll)},
             Row{"ring rows before the picture", Answer().record(kRingRows, 1).data(Bytes(8))},
             Row{"ring rows too many", Answer().record(kPicture, 2, 3).record(kRingRows, 4)},
             Row{"a second picture", Answer().record(kPicture, 2, 3).record(kPicture, 2, 3)},
             Row{"no width", Answer().record(kPicture, 0, 3)},
             Row{"no height", Answer().record(kPicture, 2, 0)},
             Row{"area above the limit", Answer().record(kPicture, 40, 40)},
             Row{"area beyond 64 bits", Answer().record(kPicture, kAll, kAll)},
             Row{"an unknown record", Answer().record(static_cast<RecordKind>(7), 0)},
             Row{"text without end", Answer().record(RecordKind::Failed, kAll)},
             Row{"something after the end", goodAnswer().data({0})},
             Row{"rows after the end", goodAnswer().rows(1, 8, 1)},
             Row{"two ends", goodAnswer().done()},
         }) {
        const auto received = row.answer.receive();
        ASSERT_FALSE(received) << row.name;
        EXPECT_NE(received.error().code, ErrorCode::Failed) << row.name;
    }
}

TEST(DecoderAnswer, ARecordOfTheRingHasNoMoreThanASlot) {
    // 4 KB a row, 64 of them a slot.
    const auto received = [](std::uint32_t rows) {
        Answer answer;
        answer.record(RecordKind::Picture, 1024, rows).record(RecordKind::RingRows, rows);
        return answer.data(Bytes(std::size_t{4096} * rows)).done().receive({100'000});
    };
    EXPECT_TRUE(received(64));
    const auto refused = received(65);
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().code, ErrorCode::Damaged);
}

TEST(DecoderAnswer, RowsThatARingDoesNotHaveAreRefused) {
    const auto received = Answer()
                              .record(RecordKind::Picture, 2, 3)
                              .record(RecordKind::RingRows, 2)
                              .data(Bytes(15))
                              .receive();
    ASSERT_FALSE(received);
    EXPECT_EQ(received.error().code, ErrorCode::Damaged);
}

TEST(DecoderAnswer, APictureThatNoMemoryHoldsIsAnError) {
    constexpr std::uint32_t kSide = 500'000'000;
    constexpr std::int64_t kAny = INT64_MAX;
    const auto received = Answer().record(RecordKind::Picture, kSide, kSide).receive({kAny, kAny});
    ASSERT_FALSE(received);
    EXPECT_EQ(received.error().code, ErrorCode::OutOfMemory);
}

TEST(DecoderAnswer, DamageNeverDoesHarm) {
    const Answer answer = goodAnswer();
    std::mt19937 random(2);
    for (int i = 0; i < 20000; ++i) {
        Bytes damaged = answer.bytes();
        damaged[random() % damaged.size()] = static_cast<std::uint8_t>(random());
        const auto received = Answer::receive(damaged, {1000});
        if (received) {
            EXPECT_EQ(received->image.width() * received->image.height(), 6);
        }
    }
}

TEST(AnswerOrder, TakesNothingAfterTheEnd) {
    AnswerOrder order({1000});
    EXPECT_TRUE(order.take({RecordKind::Failed, 3, 0}));
    EXPECT_TRUE(order.hasEnded());
    const auto again = order.take({RecordKind::Failed, 3, 0});
    ASSERT_FALSE(again);
    EXPECT_EQ(again.error().code, ErrorCode::Damaged);
}

}  // namespace
}  // namespace skarnel::io
