#include "qt/toast.h"

#include <gtest/gtest.h>

#include <QApplication>

namespace skarnel {
namespace {

class ToastTest : public ::testing::Test {
  protected:
    ToastTest() {
        host.resize(500, 400);
        host.show();
    }

    /// Lines that are not broken would be longer than the room; broken, all of them are to be seen.
    void expectBrokenAndWhole() {
        EXPECT_TRUE(toast.wordWrap());
        EXPECT_LE(toast.heightForWidth(toast.width()), toast.height());
        EXPECT_TRUE(host.rect().contains(toast.geometry()));
    }

    const QString longMessage = QStringLiteral(
        "“A fairly long name that was given to a picture of a beautiful Sunday "
        "morning at the beach.txt” is no picture that can be opened here");
    QWidget host;
    Toast toast{&host};
};

TEST_F(ToastTest, ALongMessageIsWholeEachTimeItIsTold) {
    for (int time = 0; time < 3; ++time) {
        SCOPED_TRACE(time);
        toast.tell(longMessage);
        expectBrokenAndWhole();
    }
}

TEST_F(ToastTest, ALongMessageIsWholeWhileThePictureIsResized) {
    toast.tell(longMessage);
    for (const int width : {460, 420, 421, 500}) {
        SCOPED_TRACE(width);
        host.resize(width, 400);
        QApplication::processEvents();
        expectBrokenAndWhole();
    }
}

TEST_F(ToastTest, AShortMessageAfterALongOneIsOneLineOfItsOwnWidth) {
    toast.tell(QStringLiteral("Copied"));
    const QRect alone = toast.geometry();
    toast.tell(longMessage);
    toast.tell(QStringLiteral("Copied"));
    EXPECT_FALSE(toast.wordWrap());
    EXPECT_EQ(toast.geometry(), alone);
}

}  // namespace
}  // namespace skarnel
