// What a page renderer that a page has taken over may say: messages, and descriptors for its rows.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QSizeF>
#include <QString>
#include <algorithm>
#include <array>

#include "input.h"
#include "qt/page/page_messages.h"

using namespace skarnel;

namespace {

constexpr std::size_t kMostBytes = 60'000;  // of a message, whose line takes more

/// As the two ends of the line read each kind.
void read(const PageMessage& message) {
    QString text;
    QByteArray line;
    QSize size;
    QSizeF exactSize;
    bool flag = false;
    (void)readValues(message, text, flag);
    (void)readValues(message, text, size);
    (void)readValues(message, flag, exactSize);
    if (readValues(message, text)) {
        const PageMessage again = pageMessage(message.kind, text);
        QString same;
        fuzz::demand(readValues(again, same) && same == text);
    }
    if (readValues(message, line))
        fuzz::demand(pageMessage(message.kind, line).values == message.values);
    if (readValues(message, size))
        fuzz::demand(pageMessage(message.kind, size).values == message.values);
}

/// Rows in a file of another size than they should have, sealed or not.
void mapRows(fuzz::Input& input) {
    const int width = input.byte() - 1;
    const int height = input.byte() - 1;
    const unsigned length = input.number<std::uint16_t>();
    const std::uint8_t choices = input.byte();
    const int file = ::memfd_create("rows", MFD_CLOEXEC | MFD_ALLOW_SEALING);
    const bool fits = (choices & 1U) != 0 && width > 0 && height > 0;
    fuzz::demand(::ftruncate(file, fits ? off_t{4} * width * height : off_t{length}) == 0);
    if ((choices & 2U) != 0) ::fcntl(file, F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE);
    const QImage image = imageOfSharedRows(file, {width, height});
    if (image.isNull()) return;
    fuzz::demand(image.width() == width && image.height() == height);
    fuzz::demand(image.pixel(width - 1, height - 1) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    fuzz::Input input(bytes, std::min(size, kMostBytes));
    std::array<int, 2> ends{};
    fuzz::demand(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) == 0);
    const auto whole = input.rest();
    const bool sent =
        whole.empty() || ::send(ends[0], whole.data(), whole.size(), MSG_NOSIGNAL) > 0;
    ::close(ends[0]);
    bool isOpen = true;
    if (const auto message = receivePageMessage(ends[1], isOpen)) {
        fuzz::demand(sent && isOpen && message->descriptor < 0);
        fuzz::demand(message->values.size() + sizeof message->kind == whole.size());
        read(*message);
    } else {
        fuzz::demand(!isOpen);
    }
    ::close(ends[1]);
    mapRows(input);
    return 0;
}
