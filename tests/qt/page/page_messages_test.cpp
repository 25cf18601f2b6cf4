// What the page renderer's process may say, taken over or not: messages come through whole or not
// at all, and nothing that came with them is left open.
#include "qt/page/page_messages.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <vector>

#include "util/interruptions.h"
#include "util/limited_to.h"

namespace skarnel {
namespace {

/// Both ends of a line in this process.
class PageLine : public ::testing::Test {
  protected:
    PageLine() {
        EXPECT_EQ(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends_.data()), 0);
    }
    ~PageLine() override {
        endOther();
        ::close(ends_[0]);
    }
    int here() const { return ends_[0]; }
    int other() const { return ends_[1]; }
    void endOther() {
        if (ends_[1] >= 0) ::close(ends_[1]);
        ends_[1] = -1;
    }

    /// Bytes that no sender of ours would put together, with descriptors.
    void sendRaw(const std::vector<char>& bytes, const std::vector<int>& descriptors = {}) const {
        iovec part{const_cast<char*>(bytes.data()), bytes.size()};
        msghdr header{};
        header.msg_iov = &part;
        header.msg_iovlen = 1;
        alignas(cmsghdr) std::array<char, 256> space{};
        const std::size_t size = sizeof(int) * descriptors.size();
        if (size > 0) {
            header.msg_control = space.data();
            header.msg_controllen = CMSG_SPACE(size);
            cmsghdr* control = CMSG_FIRSTHDR(&header);
            control->cmsg_level = SOL_SOCKET;
            control->cmsg_type = SCM_RIGHTS;
            control->cmsg_len = CMSG_LEN(size);
            std::memcpy(CMSG_DATA(control), descriptors.data(), size);
        }
        ASSERT_EQ(::sendmsg(other(), &header, MSG_NOSIGNAL), static_cast<ssize_t>(bytes.size()));
    }

  private:
    std::array<int, 2> ends_{-1, -1};
};

std::ptrdiff_t openDescriptors() {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return std::distance(begin(all), end(all));
}

TEST_F(PageLine, AMessageComesThroughWithItsValues) {
    ASSERT_TRUE(sendPageMessage(
        other(), pageMessage(PageMessageKind::Load, QStringLiteral("file:///a"), QSize(3, 4))));
    bool isOpen = false;
    const auto message = receivePageMessage(here(), isOpen);
    ASSERT_TRUE(isOpen && message);
    EXPECT_EQ(message->kind, PageMessageKind::Load);
    EXPECT_EQ(message->descriptor, -1);
    QString address;
    QSize size;
    EXPECT_TRUE(readValues(*message, address, size));
    EXPECT_EQ(address, QStringLiteral("file:///a"));
    EXPECT_EQ(size, QSize(3, 4));
    EXPECT_FALSE(readValues(*message, address)) << "more than is asked for";
    EXPECT_FALSE(readValues(*message, address, size, size)) << "less than is asked for";
}

TEST_F(PageLine, WhereNothingIsThereTheLineStaysOpen) {
    bool isOpen = true;
    EXPECT_FALSE(receivePageMessage(here(), isOpen));
    EXPECT_TRUE(isOpen);
}

TEST_F(PageLine, WithoutItsOtherEndItIsOver) {
    endOther();
    EXPECT_FALSE(sendPageMessage(here(), pageMessage(PageMessageKind::Started)));
    bool isOpen = true;
    EXPECT_FALSE(receivePageMessage(here(), isOpen));
    EXPECT_FALSE(isOpen);
}

TEST_F(PageLine, WhatIsNoMessageEndsItAndLeavesNothingOpen) {
    const auto before = openDescriptors();
    const int some = ::memfd_create("some", MFD_CLOEXEC);
    const struct {
        const char* name;
        std::vector<char> bytes;
    } rows[] = {{"nothing", {}},
                {"half a kind", {1, 0}},
                {"more than a message", std::vector<char>(65'541)}};
    for (const auto& row : rows) {
        for (const bool withDescriptor : {false, true}) {
            sendRaw(row.bytes, withDescriptor ? std::vector{some} : std::vector<int>());
            bool isOpen = true;
            EXPECT_FALSE(receivePageMessage(here(), isOpen)) << row.name;
            EXPECT_FALSE(isOpen) << row.name;
        }
    }
    // The longest that is one: 64 KB behind its kind.
    sendRaw(std::vector<char>(65'540));
    bool isOpen = false;
    const auto longest = receivePageMessage(here(), isOpen);
    ASSERT_TRUE(isOpen && longest);
    EXPECT_EQ(longest->values.size(), 65'536);
    ::close(some);
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(PageLine, OneDescriptorComesAlongAndMoreAreLeftClosed) {
    const auto before = openDescriptors();
    const int some = ::memfd_create("some", MFD_CLOEXEC);
    for (const std::size_t count : {1U, 2U, 3U, 9U}) {
        sendRaw(std::vector<char>(4), std::vector<int>(count, some));
        bool isOpen = false;
        const auto message = receivePageMessage(here(), isOpen);
        ASSERT_TRUE(isOpen && message) << count;
        EXPECT_EQ(message->descriptor >= 0, count == 1) << count;
        if (message->descriptor >= 0) {
            EXPECT_EQ(::fcntl(message->descriptor, F_GETFD), FD_CLOEXEC);
            ::close(message->descriptor);
        }
    }
    ::close(some);
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(PageLine, ADescriptorIsSentAlong) {
    const int some = ::memfd_create("some", MFD_CLOEXEC);
    ASSERT_EQ(::write(some, "rows", 4), 4);
    PageMessage sent = pageMessage(PageMessageKind::Picture, QSize(1, 1));
    sent.descriptor = some;
    ASSERT_TRUE(sendPageMessage(other(), sent));
    bool isOpen = false;
    const auto message = receivePageMessage(here(), isOpen);
    ASSERT_TRUE(isOpen && message);
    std::array<char, 5> text{};
    EXPECT_EQ(::pread(message->descriptor, text.data(), 4, 0), 4);
    EXPECT_STREQ(text.data(), "rows");
    ::close(message->descriptor);
    ::close(some);
}

TEST_F(PageLine, WhatIsNoLineIsNotOpen) {
    bool isOpen = true;
    EXPECT_FALSE(receivePageMessage(-1, isOpen));
    EXPECT_FALSE(isOpen);
}

TEST_F(PageLine, SendingGoesOnAfterASignal) {
    PageMessage message = pageMessage(PageMessageKind::Said);
    message.values = QByteArray(60'000, 'x');
    constexpr int kMessages = 40;  // more than the line holds: the sending waits
    int heard = 0;
    {
        const test::Interruptions interruptions;
        std::thread listener = test::uninterruptedThread([&] {
            test::Interruptions::await(20);
            for (bool isOpen = true; isOpen;) {
                pollfd wait{here(), POLLIN, 0};
                ::poll(&wait, 1, 20'000);
                if (receivePageMessage(here(), isOpen)) ++heard;
            }
        });
        for (int i = 0; i < kMessages; ++i) EXPECT_TRUE(sendPageMessage(other(), message)) << i;
        endOther();
        listener.join();
    }
    EXPECT_EQ(heard, kMessages);
}

QImage someImage() {
    QImage image(3, 2, QImage::Format_RGBA8888_Premultiplied);
    for (int i = 0; i < 6; ++i) image.setPixelColor(i % 3, i / 3, QColor(40 * i, 7, 9));
    return image;
}

TEST(SharedRows, AnImageComesThroughWithoutACopy) {
    const auto before = openDescriptors();
    {
        const QImage image = imageOfSharedRows(sharedRows(someImage()), QSize(3, 2));
        EXPECT_EQ(image, someImage());
    }
    EXPECT_EQ(openDescriptors(), before);
}

TEST(SharedRows, ThereAreNoneOfMemoryThatThereIsNot) {
    {
        const test::LimitedTo none(RLIMIT_NOFILE, test::descriptorsInUse());
        EXPECT_EQ(sharedRows(someImage()), -1);
    }
    const auto before = openDescriptors();
    {
        const test::LimitedTo less(RLIMIT_FSIZE, 23);  // one byte less than the rows
        EXPECT_EQ(sharedRows(someImage()), -1);
    }
    EXPECT_EQ(openDescriptors(), before);
}

/// A file in memory of that size, with what was promised of it.
int fileOf(off_t bytes, int seals) {
    const int file = ::memfd_create("rows", MFD_CLOEXEC | MFD_ALLOW_SEALING);
    EXPECT_EQ(::ftruncate(file, bytes), 0);
    EXPECT_EQ(::fcntl(file, F_ADD_SEALS, seals), 0);
    return file;
}

TEST(SharedRows, NothingButRowsOfThatSizeThatStayAreTaken) {
    constexpr int kAll = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE;
    constexpr int kSide = kLargestCaptureSide;
    const auto before = openDescriptors();
    const struct {
        const char* name;
        int file;
        QSize size;
    } rows[] = {
        {"no descriptor", -1, {3, 2}},
        {"a file that may shrink", fileOf(24, F_SEAL_GROW | F_SEAL_WRITE), {3, 2}},
        {"a file that cannot be sealed", ::dup(STDOUT_FILENO), {3, 2}},
        {"a byte too many", fileOf(25, kAll), {3, 2}},
        {"a byte too few", fileOf(23, kAll), {3, 2}},
        {"no width", fileOf(24, kAll), {0, 2}},
        {"no height", fileOf(24, kAll), {3, 0}},
        {"a negative side", fileOf(24, kAll), {-3, -2}},
        {"too wide", fileOf(off_t{4} * (kSide + 1), kAll), {kSide + 1, 1}},
        {"too high", fileOf(off_t{4} * (kSide + 1), kAll), {1, kSide + 1}},
    };
    for (const auto& row : rows)
        EXPECT_TRUE(imageOfSharedRows(row.file, row.size).isNull()) << row.name;
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_FALSE(imageOfSharedRows(fileOf(24, kAll), {3, 2}).isNull());
    EXPECT_FALSE(imageOfSharedRows(fileOf(off_t{4} * kSide, kAll), {kSide, 1}).isNull());
}

}  // namespace
}  // namespace skarnel
