#include "qt/text_bar.h"

#include <gtest/gtest.h>

#include <QComboBox>
#include <QFontComboBox>
#include <QLineEdit>
#include <QTest>

#include "qt/styled_document.h"
#include "qt/text_editor.h"

namespace skarnel {
namespace {

class TextBarTest : public ::testing::Test {
  protected:
    TextBarTest() {
        editor.setWholeFont(QStringLiteral("Times"), 48);
        editor.replaceSelection(u"text");
        editor.selectAll();
        bar.show();
    }

    QComboBox& sizes() {
        for (QComboBox* box : bar.findChildren<QComboBox*>())
            if (qobject_cast<QFontComboBox*>(box) == nullptr) return *box;
        ADD_FAILURE() << "no list of sizes";
        std::abort();
    }

    void typeSize(const char* text) {
        QLineEdit& line = *sizes().lineEdit();
        line.setFocus();
        line.selectAll();
        QTest::keyClicks(&line, QString::fromLatin1(text));
        QTest::keyClick(&line, Qt::Key_Return);
    }

    double size() { return editor.text().styleAt(0).size; }

    TextEditor editor;
    TextBar bar{editor};
};

TEST_F(TextBarTest, ATypedSizeIsTakenAlsoWithAFractionAndInTheUsersDigits) {
    typeSize("13.5");
    EXPECT_EQ(size(), 13.5);
    typeSize("14");
    EXPECT_EQ(size(), 14);
    bar.setLocale(QLocale(QLocale::German));
    typeSize("20,25");
    EXPECT_EQ(size(), 20.25);
    typeSize("3");  // also the beginning of another size on the list
    EXPECT_EQ(size(), 3);
}

TEST_F(TextBarTest, ASizeThatIsNoneGoesBack) {
    for (const char* text : {"0", "0.5", "abc", "-", ""}) {
        typeSize(text);
        EXPECT_EQ(size(), 48) << text;
        EXPECT_EQ(sizes().currentText(), QStringLiteral("48")) << text;
    }
}

TEST_F(TextBarTest, ShowsTheSizeAtTheCaret) {
    TextStyle style;
    style.size = 31.5;
    editor.setText(StyledText(u"a", style));
    editor.selectAll();
    EXPECT_EQ(sizes().currentText(), QStringLiteral("31.5"));
}

}  // namespace
}  // namespace skarnel
