#include "qt/cause_text.h"

#include "qt/languages.h"

namespace skarnel {

QString causeText(const Error& error) {
    return QString::fromStdString(spokenCauses().cause(error.message));
}

}  // namespace skarnel
