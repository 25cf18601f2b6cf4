// Rich text from elsewhere: what is taken over can be kept in a recipe and drawn.
#include <QGuiApplication>

#include "input.h"
#include "qt/page/html_reader.h"
#include "textimaging/html_writer.h"
#include "textimaging/serialized_text.h"
#include "textimaging/string_encodings.h"

using namespace skarnel;

namespace {

void startToolkit() {
    static int count = 1;
    static char name[] = "pasted_html";
    static char* arguments[] = {name, nullptr};
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    static const QGuiApplication application(count, arguments);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    startToolkit();
    const fuzz::Input input(bytes, size);
    for (const std::u16string& html : {utf16FromUtf8(input.text()), input.units()}) {
        const StyledText text = styledTextOfHtml(html, {});
        const auto kept = serializeText(text);
        fuzz::demand(kept && *deserializeText(*kept) == text);
        fuzz::demand(htmlData(text, 4).has_value());
    }
    return 0;
}
