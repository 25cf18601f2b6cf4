#include "qt/page/page_messages.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

namespace skarnel {
namespace {

constexpr std::size_t kLargestMessage = 64 * 1024;  // bytes; addresses have two for each unit
constexpr int kSeals = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE;

bool writeRows(int file, const QImage& image) {
    const std::size_t rowBytes = std::size_t{4} * image.width();
    for (int y = 0; y < image.height(); ++y) {
        std::size_t done = 0;
        while (done < rowBytes) {
            const ssize_t count = ::write(file, image.constScanLine(y) + done, rowBytes - done);
            if (count < 0 && errno == EINTR) continue;
            if (count <= 0) return false;
            done += static_cast<std::size_t>(count);
        }
    }
    return true;
}

/// The one descriptor that came with a message, or -1; more than one are closed.
int takeDescriptor(msghdr& header) {
    const cmsghdr* control = CMSG_FIRSTHDR(&header);
    if (control == nullptr || control->cmsg_level != SOL_SOCKET || control->cmsg_type != SCM_RIGHTS)
        return -1;
    const std::size_t count = (control->cmsg_len - CMSG_LEN(0)) / sizeof(int);
    for (std::size_t i = 0; i < count; ++i) {
        int descriptor = -1;
        std::memcpy(&descriptor, CMSG_DATA(control) + i * sizeof descriptor, sizeof descriptor);
        if (count == 1) return descriptor;
        ::close(descriptor);
    }
    return -1;
}

}  // namespace

bool sendPageMessage(int line, const PageMessage& message) {
    PageMessageKind kind = message.kind;
    std::array<iovec, 2> parts{iovec{&kind, sizeof kind},
                               iovec{const_cast<char*>(message.values.constData()),
                                     static_cast<std::size_t>(message.values.size())}};
    msghdr header{};
    header.msg_iov = parts.data();
    header.msg_iovlen = parts.size();
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> space{};
    if (message.descriptor >= 0) {
        header.msg_control = space.data();
        header.msg_controllen = space.size();
        cmsghdr* control = CMSG_FIRSTHDR(&header);
        control->cmsg_level = SOL_SOCKET;
        control->cmsg_type = SCM_RIGHTS;
        control->cmsg_len = CMSG_LEN(sizeof(int));
        std::memcpy(CMSG_DATA(control), &message.descriptor, sizeof(int));
    }
    ssize_t sent = 0;
    do {
        sent = ::sendmsg(line, &header, MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    return sent >= 0;
}

std::optional<PageMessage> receivePageMessage(int line, bool& isOpen) {
    PageMessage message{};
    message.values.resize(kLargestMessage);
    std::array<iovec, 2> parts{iovec{&message.kind, sizeof message.kind},
                               iovec{message.values.data(), kLargestMessage}};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> space{};
    msghdr header{};
    header.msg_iov = parts.data();
    header.msg_iovlen = parts.size();
    header.msg_control = space.data();
    header.msg_controllen = space.size();
    const ssize_t count = ::recvmsg(line, &header, MSG_DONTWAIT | MSG_CMSG_CLOEXEC);
    if (count < 0 && (errno == EAGAIN || errno == EINTR)) return std::nullopt;
    // Also a message of no bytes may bring one.
    if (count >= 0) message.descriptor = takeDescriptor(header);
    isOpen = count >= ssize_t{sizeof message.kind} && (header.msg_flags & MSG_TRUNC) == 0;
    if (!isOpen) {
        if (message.descriptor >= 0) ::close(message.descriptor);
        return std::nullopt;
    }
    message.values.resize(count - ssize_t{sizeof message.kind});
    return message;
}

int sharedRows(const QImage& image) {
    const int file = ::memfd_create("skarnel-page", MFD_CLOEXEC | MFD_ALLOW_SEALING);
    if (file < 0) return -1;
    if (writeRows(file, image) && ::fcntl(file, F_ADD_SEALS, kSeals) == 0) return file;
    ::close(file);
    return -1;
}

QImage imageOfSharedRows(int descriptor, QSize size) {
    if (descriptor < 0) return {};
    const auto length = std::size_t{4} * size.width() * size.height();
    struct stat status {};
    const bool isWhole =
        size.width() > 0 && size.height() > 0 && size.width() <= kLargestCaptureSide &&
        size.height() <= kLargestCaptureSide && ::fcntl(descriptor, F_GET_SEALS) == kSeals &&
        ::fstat(descriptor, &status) == 0 && static_cast<std::size_t>(status.st_size) == length;
    void* rows =
        isWhole ? ::mmap(nullptr, length, PROT_READ, MAP_PRIVATE, descriptor, 0) : MAP_FAILED;
    ::close(descriptor);
    if (rows == MAP_FAILED) return {};
    struct Mapping {
        void* rows;
        std::size_t length;
    };
    return QImage(
        static_cast<const uchar*>(rows), size.width(), size.height(), qsizetype{4} * size.width(),
        QImage::Format_RGBA8888_Premultiplied,
        [](void* mapping) {
            const auto* held = static_cast<Mapping*>(mapping);
            ::munmap(held->rows, held->length);
            delete held;
        },
        new Mapping{rows, length});
}

}  // namespace skarnel
