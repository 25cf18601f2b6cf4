#include "qt/process_walls.h"

#include <QDesktopServices>
#include <QFile>
#include <QFileInfo>
#include <QLibraryInfo>
#include <string>
#include <vector>

#include "imaging/io/decoder_wall.h"
#include "platform/page_module.h"
#include "qt/guide_pages.h"
#include "util/log/system_log.h"
#include "util/walls/helper_program.h"
#include "util/walls/page_opener.h"
#include "util/walls/window_walls.h"

namespace skarnel {

namespace {

constexpr const char* kSchemes[] = {"https", "file"};

std::string encoded(const QUrl& url) {
    return url.toEncoded().toStdString();
}

/// The addresses that the window's commands open, as `encoded` writes them.
std::vector<std::string> knownPages() {
    std::vector<std::string> pages{
        encoded(QUrl(QStringLiteral("https://" SKARNEL_HELP_HOST "/products/skarnel/")))};
    for (const QUrl& page : guidePages()) pages.push_back(encoded(page));
    return pages;
}

/// Where the page renderer's engine looks for its own program: at the place that the variable names
/// and nowhere else, or with the toolkit's programs and then beside the renderer.
std::vector<std::string> engineProgramsOf(const std::string& renderer) {
    if (const QString chosen = qEnvironmentVariable("QTWEBENGINEPROCESS_PATH"); !chosen.isEmpty())
        return {QFile::encodeName(chosen).toStdString()};
    const QString name = QStringLiteral("/QtWebEngineProcess");
    const QString beside = QFileInfo(QFile::decodeName(renderer.c_str())).canonicalPath();
    std::vector<std::string> programs{
        QFile::encodeName(QLibraryInfo::path(QLibraryInfo::LibraryExecutablesPath) + name)
            .toStdString()};
    if (!beside.isEmpty()) programs.push_back(QFile::encodeName(beside + name).toStdString());
    return programs;
}

/// The programs that the window and its helpers start, all of them helpers.
std::vector<std::string> helperPrograms() {
    std::vector<std::string> programs;
    if (const auto renderer = findHelperProgram(kPageRendererName)) {
        programs = engineProgramsOf(*renderer);
        programs.push_back(*renderer);
    }
    if (const auto& decoder = io::decoderProgram()) programs.push_back(*decoder);
    return programs;
}

}  // namespace

ProcessWalls::ProcessWalls() : opener_(std::make_unique<PageOpener>(knownPages())) {
    if (const auto raised = raiseWindowWalls(helperPrograms()); !raised) {
        systemLogFormat("The window runs without this wall: %s", raised.error().message.c_str());
    }
}

ProcessWalls::~ProcessWalls() {
    for (const char* scheme : kSchemes) QDesktopServices::unsetUrlHandler(QLatin1String(scheme));
}

void ProcessWalls::routePages() {
    for (const char* scheme : kSchemes) {
        QDesktopServices::setUrlHandler(QLatin1String(scheme), this, "openPage");
    }
}

void ProcessWalls::openPage(const QUrl& page) {
    if (opener_->open(encoded(page))) return;
    systemLog("The page cannot be opened: " + encoded(page));
    emit pageRefused(page);
}

}  // namespace skarnel
