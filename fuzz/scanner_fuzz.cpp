// The scanner: it never leaves its text, and a scan that fails leaves it where it was.
#include "input.h"
#include "util/string/nsscanner.h"

using namespace skarnel;

namespace {

/// One operation; true when it found what it was to find.
bool scanOnce(NSScanner& scanner, std::uint8_t operation, const std::u16string& wanted) {
    switch (operation % 8) {
        case 0:
            return scanner.scanString(wanted);
        case 1:
            return scanner.scanUpToString(wanted).has_value();
        case 2:
            return scanner.scanUpToCharactersFromSet(wanted).has_value();
        case 3:
            return scanner.scanInt().has_value();
        case 4:
            return scanner.scanHexInt().has_value();
        case 5:
            scanner.setCharactersToBeSkipped(wanted);
            return false;
        case 6:
            scanner.setCaseSensitive(operation >= 128);
            return false;
        default:
            static_cast<void>(scanner.isAtEnd());
            return false;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    fuzz::Input input(bytes, size);
    std::uint64_t operations = input.number<std::uint64_t>();
    const std::u16string wanted = input.unitsUpToZero();
    const NSString text(input.units());
    NSScanner scanner(text);
    for (; operations != 0; operations >>= 8) {
        const std::uint64_t before = scanner.scanLocation();
        const bool found = scanOnce(scanner, static_cast<std::uint8_t>(operations), wanted);
        const std::uint64_t after = scanner.scanLocation();
        fuzz::demand(after <= text.length() && (found ? after > before : after == before));
    }
    return 0;
}
