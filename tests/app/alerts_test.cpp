#include "controller_fixture.h"

namespace skarnel::testing_app {
namespace {

using Alerts = ControllerTest;

TEST_F(Alerts, WithAParentIsASheetOfTheDefaultStyleWhateverStyleWasAskedFor) {
    for (const NSAlertStyle style :
         {NSAlertStyle::Warning, NSAlertStyle::Informational, NSAlertStyle::Critical}) {
        controller.doAlert("Message.", "More.", &window.resultWindow, style);
        EXPECT_THAT(log.take(),
                    ElementsAre("beep", "alert \"Message.\" \"OK\" none none \"More.\"",
                                "alert.beginSheet on resultWindow delegate controller"));
    }
}

TEST_F(Alerts, WithoutAParentIsModalInTheStyleAskedFor) {
    controller.doAlert("Message.", "More.", nullptr, NSAlertStyle::Critical);
    EXPECT_THAT(log.take(), ElementsAre("beep", "alert \"Message.\" \"OK\" none none \"More.\"",
                                        "alert.setAlertStyle 2", "alert.runModal"));
    controller.doAlert("Message.", "More.", nullptr, NSAlertStyle::Informational);
    EXPECT_THAT(log.take(), ElementsAre("beep", "alert \"Message.\" \"OK\" none none \"More.\"",
                                        "alert.setAlertStyle 1", "alert.runModal"));
}

}  // namespace
}  // namespace skarnel::testing_app
