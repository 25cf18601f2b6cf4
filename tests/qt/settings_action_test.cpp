// Every control writes its key before its action is sent, and one action serves all edits that are
// already waiting: no picture is ever made for a value that the hand has left behind.
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QPushButton>

#include "app/stored_user_defaults.h"
#include "qt/number_field.h"
#include "qt/settings_model.h"
#include "qt/settings_panel.h"
#include "qt/slider_hands.h"
#include "storage/settings_store.h"

namespace skarnel {
namespace {

/// What an action finds when it is sent.
struct Sent {
    SettingsState stored;
    SettingsState shown;
};

class SettingsActionTest : public ::testing::Test {
  protected:
    SettingsActionTest() {
        const SettingsState first = defaultSettings();
        for (std::size_t i = 0; i < kReflectionSettings.size(); ++i)
            defaults.setFloat(first.numbers[i], kReflectionSettings[i].key);
        panel.refresh();
        panel.resize(400, 700);
        panel.show();
    }

    SettingsState shown() {
        SettingsState all;
        for (std::size_t i = 0; i < kReflectionSettings.size(); ++i)
            all.numbers[i] = panel.slider(kReflectionSettings[i].key).floatValue();
        all.applyBackgroundColor = panel.applyBackground().isChecked();
        return all;
    }

    /// Runs a hand's work and expects one action for it, sent when store and sliders both held
    /// what they hold in the end, which is not what they held before.
    template <typename Work>
    void expectOneAction(std::string_view what, Work work) {
        const SettingsState before = readSettings(defaults);
        sent.clear();
        work();
        EXPECT_TRUE(sent.empty()) << what << ": sent before the edits that wait were looked at";
        QApplication::processEvents();
        const SettingsState after = readSettings(defaults);
        EXPECT_FALSE(after == before) << what;
        ASSERT_EQ(sent.size(), 1U) << what;
        EXPECT_TRUE(sent[0].stored == after) << what;
        EXPECT_TRUE(sent[0].shown == after) << what;
    }

    SettingsStore store{std::string()};
    StoredUserDefaults defaults{store};
    std::vector<Sent> sent;
    SettingsModel model{defaults, [this] { sent.push_back({readSettings(defaults), shown()}); }};
    SettingsPanel panel{model};
};

TEST_F(SettingsActionTest, ADraggedSlidersKeyIsWrittenFirst) {
    for (const SettingRange& range : kSettingRanges) {
        FloatSlider& slider = panel.slider(range.key);
        expectOneAction(range.key, [&] { dragHandle(slider, roomyPixels(slider)); });
    }
}

TEST_F(SettingsActionTest, ASlidersKeyIsWrittenFirstForKeysWheelAndDoubleClick) {
    for (const SettingRange& range : kSettingRanges) {
        FloatSlider& slider = panel.slider(range.key);
        slider.setFocus();
        expectOneAction(range.key, [&] { QTest::keyClick(&slider, Qt::Key_Right); });
        expectOneAction(range.key, [&] { turnWheel(slider, 120); });
        expectOneAction(range.key,
                        [&] { QTest::mouseDClick(&slider, Qt::LeftButton, {}, handleAt(slider)); });
        EXPECT_EQ(slider.floatValue(), settingDefault(range.key)) << range.key;
    }
}

TEST_F(SettingsActionTest, AFieldsKeyIsWrittenFirst) {
    for (const SettingRange& range : kSettingRanges) {
        NumberField& field = panel.field(range.key);
        field.setFocus();
        expectOneAction(range.key, [&] {
            field.selectAll();
            QTest::keyClicks(&field, QStringLiteral("12.25"));
            QTest::keyClick(&field, Qt::Key_Return);
        });
        EXPECT_EQ(defaults.floatForKey(range.key), 12.25F) << range.key;
        expectOneAction(range.key, [&] { QTest::keyClick(&field, Qt::Key_Up); });
        EXPECT_EQ(defaults.floatForKey(range.key), 12.25F + range.step) << range.key;
        expectOneAction(range.key, [&] {
            field.selectAll();
            QTest::keyClicks(&field, QStringLiteral("13"));
            panel.slider(range.key).setFocus();  // leaving the field takes what was typed
        });
    }
}

TEST_F(SettingsActionTest, TheBoxesKeyIsWrittenFirstAndSoIsUndo) {
    const auto click = [&] {
        QTest::mouseClick(&panel.applyBackground(), Qt::LeftButton, {},
                          {8, panel.applyBackground().height() / 2});
    };
    expectOneAction("box on", click);
    expectOneAction("box off", click);
    expectOneAction("undo", [&] { model.undo(); });
    expectOneAction("redo", [&] { model.redo(); });
}

TEST_F(SettingsActionTest, ADragThatIsFasterThanTheRendersSendsOneActionForItsLastValue) {
    FloatSlider& slider = panel.slider("alpha");
    const QPoint from = handleAt(slider);
    expectOneAction("alpha", [&] {
        QTest::mousePress(&slider, Qt::LeftButton, {}, from);
        for (int i = 1; i <= 200; ++i) QTest::mouseMove(&slider, from - QPoint(i % 60, 0));
        QTest::mouseRelease(&slider, Qt::LeftButton, {}, from - QPoint(60, 0));
    });
}

TEST_F(SettingsActionTest, MovesThatArriveDuringARenderAreOneRenderMore) {
    int renders = 0;
    SettingsModel slow{defaults, [&] {
                           if (++renders > 1) return;
                           // The hand goes on while the first picture is made.
                           for (float gap = 2; gap < 50; ++gap) slow.editNumber("offset", gap);
                       }};
    slow.editNumber("offset", 1);
    for (int i = 0; i < 5; ++i) QApplication::processEvents();
    EXPECT_EQ(renders, 2);
    EXPECT_EQ(defaults.floatForKey("offset"), 49.0F);
}

TEST_F(SettingsActionTest, AnUntouchedFieldAndAnUnfocusedWheelSendNothing) {
    for (const SettingRange& range : kSettingRanges) {
        panel.resetButton().setFocus();
        turnWheel(panel.slider(range.key), 120);
        NumberField& field = panel.field(range.key);
        field.setFocus();
        QTest::keyClick(&field, Qt::Key_Return);
        panel.resetButton().setFocus();
    }
    QApplication::processEvents();
    EXPECT_TRUE(sent.empty());
    EXPECT_TRUE(shown() == defaultSettings());
}

}  // namespace
}  // namespace skarnel
