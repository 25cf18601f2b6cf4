#include "qt/guide_pages.h"

#include <string>

#include "qt/languages.h"
#include "util/resources/resource_path.h"

namespace skarnel {
namespace {

std::optional<QUrl> installedPage(const std::string& folder) {
    const auto path = findResource("help/" + folder + "index.html");
    if (!path) return std::nullopt;
    return QUrl::fromLocalFile(QString::fromStdString(*path));
}

}  // namespace

std::optional<QUrl> guidePage(const QString& catalogue) {
    if (!catalogue.isEmpty()) {
        if (auto page = installedPage(catalogue.toStdString() + "/")) return page;
    }
    return installedPage("");
}

std::vector<QUrl> guidePages() {
    std::vector<QUrl> pages;
    if (const auto page = installedPage("")) pages.push_back(*page);
    for (const char* catalogue : kCatalogues) {
        if (const auto page = installedPage(std::string(catalogue) + "/")) pages.push_back(*page);
    }
    return pages;
}

}  // namespace skarnel
