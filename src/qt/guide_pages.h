// The user's guide that came with the program: the first page of it in each language.
#pragma once

#include <QString>
#include <QUrl>
#include <optional>
#include <vector>

namespace skarnel {

/// The guide's first page in the language of a catalogue (empty for English), where that is
/// installed, and in English elsewhere; none where there is no guide at all.
std::optional<QUrl> guidePage(const QString& catalogue);

/// All that `guidePage` may give, English first.
std::vector<QUrl> guidePages();

}  // namespace skarnel
