// What the page renderer's process and the program that started it say to each other.
#pragma once

#include <QByteArray>
#include <QDataStream>
#include <QIODevice>
#include <QImage>
#include <QSize>
#include <cstdint>
#include <optional>

namespace skarnel {

/// The renderer's end of the line, a socket that keeps messages apart.
inline constexpr int kPageLineDescriptor = 3;

/// Wider or higher than this a page is not captured; pixels.
inline constexpr int kLargestCaptureSide = 16'384;

/// Addresses and titles are cut to this before they are sent; bytes or UTF-16 units.
inline constexpr int kLongestPageText = 10'000;

enum class PageMessageKind : std::uint32_t {
    // To the renderer.
    Load,     // QString address, QSize of the view
    Capture,  // QSize; answered by a Picture
    // From the renderer.
    Requested,      // QString address, bool whether it is allowed
    Started,        // nothing
    TitleReceived,  // QString
    Finished,       // bool whether it went well, QSizeF of the document
    Drawing,        // nothing; now and then while a capture takes long
    Picture,        // QSize, with a descriptor of the rows; a null size without one is no picture
    Said,           // QByteArray for the log
};

struct PageMessage {
    PageMessageKind kind;
    QByteArray values;
    int descriptor = -1;  // the receiver's to close
};

/// False when the other end is gone, or takes nothing in.
bool sendPageMessage(int line, const PageMessage& message);

/// The next message, without waiting. `isOpen` becomes false when the other end is gone or sent
/// what is no message.
std::optional<PageMessage> receivePageMessage(int line, bool& isOpen);

template <typename... Values>
PageMessage pageMessage(PageMessageKind kind, const Values&... values) {
    PageMessage message{kind, {}};
    QDataStream stream(&message.values, QIODevice::WriteOnly);
    (void)(stream << ... << values);
    return message;
}

/// False where the message holds less or more.
template <typename... Values>
bool readValues(const PageMessage& message, Values&... values) {
    QDataStream stream(message.values);
    (void)(stream >> ... >> values);
    return stream.status() == QDataStream::Ok && stream.atEnd();
}

/// The rows of an RGBA8 premultiplied image, in memory that cannot shrink any more; -1 without
/// memory.
int sharedRows(const QImage& image);

/// The image of such rows without a copy; null unless the descriptor holds exactly that size and
/// can be relied on to keep it. Takes the descriptor.
QImage imageOfSharedRows(int descriptor, QSize size);

}  // namespace skarnel
