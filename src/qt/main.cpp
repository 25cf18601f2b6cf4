// The program `skarnel`: the window.
#include <unistd.h>

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QLocale>
#include <QUrl>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "qt/activation_token.h"
#include "qt/application.h"
#include "qt/end_signals.h"
#include "qt/file_names.h"
#include "qt/languages.h"
#include "qt/process_walls.h"
#include "qt/program_parts.h"
#include "qt/single_instance.h"
#include "qt/toolkit_services.h"
#include "util/log/message.h"
#include "util/log/shown_text.h"
#include "util/messages/translator.h"

namespace {

enum ExitCode { kAllWell = 0, kUsage = 2, kNoDisplay = 3 };

std::string usageText(const skarnel::Translator& words) {
    return words.help(
        "Usage: skarnel [PICTURE...]\n"
        "Turns a picture into its reflection, in a window.\n"
        "\n"
        "  PICTURE        a picture to open; more than one go to Open Recent\n"
        "  -h, --help     show this text and end\n"
        "      --version  show the version and end\n"
        "\n"
        "Without a display use skarnel-render, which writes the result to a file.\n");
}

void sayNoDisplay() {
    const auto words = skarnel::Translator::ofEnvironment();
    const std::string told = words.cause(
        skarnel::marked("there is no display to open a window on; skarnel-render PICTURE makes the "
                        "result without one"));
    std::fprintf(stderr, "skarnel: %s\n", told.c_str());
}

/// What is done once when the toolkit ends the process because its display went away. The stack,
/// and the application on it, is still there then.
class LastDeed {
  public:
    explicit LastDeed(std::function<void()> deed) {
        waiting() = std::move(deed);
        std::atexit([] { happen(); });
    }
    LastDeed(const LastDeed&) = delete;
    LastDeed& operator=(const LastDeed&) = delete;
    ~LastDeed() { waiting() = {}; }

    static void happen() {
        if (const auto deed = std::exchange(waiting(), {})) deed();
    }

  private:
    static std::function<void()>& waiting() {
        static std::function<void()> deed;
        return deed;
    }
};

/// The toolkit ends the process in its own words when it cannot reach a display; these are ours.
void onMessage(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    static const QtMessageHandler before = qInstallMessageHandler(onMessage);
    if (type == QtFatalMsg && message.contains(QLatin1String("platform plugin"))) {
        sayNoDisplay();
        std::_Exit(kNoDisplay);
    }
    before(type, context, message);
    // Said of X11 and of Wayland; what follows may end the process without its exit handlers.
    if (type == QtWarningMsg && message.contains(QLatin1String("connection broke")))
        LastDeed::happen();
}

bool displayNamed() {
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
        const char* value = std::getenv(name);
        if (value != nullptr && *value != 0) return true;
    }
    return false;
}

bool isOption(const char* argument, const char* name) {
    return std::strcmp(argument, name) == 0;
}

QStringList pictureArguments(const QStringList& arguments) {
    QStringList pictures;
    bool options = true;
    for (const QString& argument : arguments.mid(1)) {
        if (options && argument == QLatin1String("--")) {
            options = false;
            continue;
        }
        const QUrl url(argument);
        pictures << QFileInfo(url.isLocalFile() ? skarnel::pathOfAddress(url) : argument)
                        .absoluteFilePath();
    }
    return pictures;
}

/// The exit code when an option settles the run without a window.
std::optional<int> settledByOptions(int argc, char** argv) {
    for (int i = 1; i < argc && !isOption(argv[i], "--"); ++i) {
        if (isOption(argv[i], "-h") || isOption(argv[i], "--help")) {
            std::fputs(usageText(skarnel::Translator::ofEnvironment()).c_str(), stdout);
            return kAllWell;
        }
        if (isOption(argv[i], "--version")) {
            std::puts("skarnel " SKARNEL_VERSION);
            return kAllWell;
        }
    }
    return std::nullopt;
}

/// The first option that neither we nor the toolkit know; null when there is none. The toolkit has
/// taken its own out of the arguments by then.
const QString* unknownOption(const QStringList& arguments) {
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        if (arguments[i] == QLatin1String("--")) return nullptr;
        if (arguments[i].size() > 1 && arguments[i].startsWith(QLatin1Char('-')))
            return &arguments[i];
    }
    return nullptr;
}

/// The session's own folder, else a private one in the temporary folder, where anybody could lay
/// things in the way; empty without either, and then every start has a window of its own.
QString doorFolder() {
    const QString session = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (!session.isEmpty()) return session;
    const auto own = skarnel::privateTemporaryDirectory(QDir::tempPath().toStdString());
    return own ? QString::fromStdString(*own) : QString();
}

}  // namespace

int main(int argc, char** argv) {
    if (const auto code = settledByOptions(argc, argv)) return *code;
    if (!displayNamed()) {
        sayNoDisplay();
        return kNoDisplay;
    }
    qInstallMessageHandler(nullptr);
    onMessage(QtDebugMsg, {}, {});
    const auto token = skarnel::ActivationToken::ofEnvironment();
    skarnel::ProcessWalls walls;
    QApplication toolkit(argc, argv);
    walls.routePages();
    QApplication::setApplicationName(QStringLiteral("skarnel"));
    QApplication::setApplicationVersion(QStringLiteral(SKARNEL_VERSION));
    QApplication::setDesktopFileName(QStringLiteral(SKARNEL_DESKTOP_ID));
    // A hidden window or a closed panel is no reason to end; closing the main window is.
    QApplication::setQuitOnLastWindowClosed(false);

    // Before the first widget, which reads its texts when it is made.
    const QString catalogue = skarnel::catalogueFor(QLocale::system().uiLanguages());
    const skarnel::Language language(catalogue);

    const QStringList arguments = QApplication::arguments();
    if (const QString* option = unknownOption(arguments)) {
        const auto words = skarnel::Translator::ofEnvironment();
        const std::string told =
            words.cause(skarnel::filled("unknown option %1", {option->toStdString()}));
        std::string shown;
        skarnel::forEachShown(told, skarnel::LineEnds::Escaped,
                              [&shown](std::string_view piece) { shown += piece; });
        std::fprintf(stderr, "skarnel: %s\n%s", shown.c_str(), usageText(words).c_str());
        return kUsage;
    }
    const QStringList pictures = pictureArguments(arguments);
    skarnel::SingleInstance instance;
    const QString folder = doorFolder();
    if (!folder.isEmpty() &&
        !instance.claim(skarnel::SingleInstance::doorName(folder), pictures, token))
        return kAllWell;

    skarnel::ProgramParts program;
    skarnel::Application application(program.parts(language.isSpoken() ? catalogue : QString()));
    QObject::connect(&walls, &skarnel::ProcessWalls::pageRefused, &application,
                     &skarnel::Application::tellRefusedPage);
    QObject::connect(
        &instance, &skarnel::SingleInstance::called, &application,
        [&application](const QStringList& called, const skarnel::ActivationToken& given) {
            application.raise(given);
            application.openPictures(called);
        });
    const LastDeed keep([&application] { application.persistWithoutWindow(); });
    // The end of the session or of the terminal, or Ctrl+C there.
    const skarnel::EndSignals endSignals;
    QObject::connect(&endSignals, &skarnel::EndSignals::asked, &application,
                     &skarnel::Application::end);
    application.start(pictures);
    return QApplication::exec();
}
