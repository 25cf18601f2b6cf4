// Each request for memory of the command line's own parts in turn is refused: the line or the value
// is the right one, or that there is no memory is said; nothing is lost.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <optional>
#include <string>
#include <utility>

#include "cli/recipe_settings.h"
#include "cli/report.h"
#include "memory/refuse_each.h"
#include "storage/temporary_folder.h"

namespace skarnel::cli {
namespace {

using testing::MemoryPause;
using testing::Refusal;
using testing::refuseEach;

/// What goes into one of the standard streams while this lives. Takes no memory of the program's.
class CaughtStream {
  public:
    explicit CaughtStream(int stream)
        : stream_(stream),
          before_(::fcntl(stream, F_DUPFD_CLOEXEC, 3)),
          caught_(::memfd_create("caught", MFD_CLOEXEC)) {
        ::dup2(caught_, stream_);
    }
    CaughtStream(const CaughtStream&) = delete;
    CaughtStream& operator=(const CaughtStream&) = delete;
    ~CaughtStream() {
        ::dup2(before_, stream_);
        ::close(before_);
        ::close(caught_);
    }

    std::string text() const {
        std::string read(65'536, '\0');
        const ssize_t count = ::pread(caught_, read.data(), read.size(), 0);
        read.resize(static_cast<std::size_t>(count));
        return read;
    }

  private:
    int stream_;
    int before_;
    int caught_;
};

class CommandLineWithoutMemory : public ::testing::TestWithParam<Refusal> {
  protected:
    void SetUp() override {
        if (!testing::canRefuseMemory()) GTEST_SKIP() << "a sanitizer has a malloc of its own";
    }

    const Translator english_;

    /// `report` comes as `line` into standard output, or what stands for it does and an error.
    void expectLine(const Console::Style& style, const JobReport& report, const std::string& line,
                    const std::string& without) {
        refuseEach(line, GetParam(), [&] {
            const CaughtStream out(STDOUT_FILENO);
            const CaughtStream err(STDERR_FILENO);
            Console console(style, english_);
            console.report(report);
            const MemoryPause reading;
            if (!console.outputFailed()) return out.text() == line;
            const std::string told = err.text();
            return out.text() == without &&
                   told.find("skarnel-render: No memory left for a report\n") != std::string::npos;
        });
    }
};

JobReport wellReport() {
    JobReport report;
    report.input = "a folder/with a picture of a long name.jpg";
    report.output = "another folder/with a picture of a long name.png";
    report.inputSize = PixelSize{3, 4};
    report.outputSize = PixelSize{5, 6};
    report.milliseconds = 1.5;
    return report;
}

TEST_P(CommandLineWithoutMemory, AReportIsAJsonObjectAllTheSame) {
    Console::Style style;
    style.json = true;
    expectLine(style, wellReport(),
               R"({"input":"a folder/with a picture of a long name.jpg",)"
               R"("output":"another folder/with a picture of a long name.png",)"
               R"("inputSize":[3,4],"outputSize":[5,6],"milliseconds":1.5,"error":null})"
               "\n",
               R"({"input":null,"output":null,"inputSize":null,"outputSize":null,)"
               R"("milliseconds":0.0,"error":"No memory left for a report"})"
               "\n");
}

TEST_P(CommandLineWithoutMemory, AReportForPeopleIsItsLineOrNone) {
    expectLine({}, wellReport(), "another folder/with a picture of a long name.png\n", "");
}

TEST_P(CommandLineWithoutMemory, ARecipeIsWrittenAndReadOrSaysWhyNot) {
    RenderSettings settings = defaultSettings();
    settings.numbers[0] = 12.5F;
    const std::optional<StyledText> text(
        std::in_place, u"A text that is longer than what a string holds by itself");
    const std::string whole = *recipeOfSettings(settings, text);
    refuseEach("recipeOfSettings", GetParam(), [&] {
        const Result<std::string> recipe = recipeOfSettings(settings, text);
        return recipe ? *recipe == whole : recipe.error().code == ErrorCode::OutOfMemory;
    });
    const test::TemporaryFolder folder;
    const std::string path = folder / "a recipe of a long name.skarnel";
    test::putFile(path, whole);
    refuseEach("settingsFromRecipe", GetParam(), [&] {
        const Result<RecipeSettings> read = settingsFromRecipe(path);
        return read ? read->render.numbers == settings.numbers && read->text == text
                    : read.error().code == ErrorCode::OutOfMemory;
    });
}

INSTANTIATE_TEST_SUITE_P(Once_AndFromThenOn, CommandLineWithoutMemory,
                         ::testing::Values(Refusal::Once, Refusal::FromThenOn),
                         [](const auto& row) { return testing::nameOf(row.param); });

}  // namespace
}  // namespace skarnel::cli
