#include "qt/activation_token.h"

#include <QtGlobal>

namespace skarnel {
namespace {

constexpr const char* kActivation = "XDG_ACTIVATION_TOKEN";
constexpr const char* kStartup = "DESKTOP_STARTUP_ID";

void offer(const char* name, const QByteArray& value) {
    if (value.isEmpty())
        qunsetenv(name);
    else
        qputenv(name, value);
}

}  // namespace

ActivationToken ActivationToken::ofEnvironment() {
    return {qgetenv(kActivation), qgetenv(kStartup)};
}

OfferedToken::OfferedToken(const ActivationToken& token) {
    offer(kActivation, token.activation);
    offer(kStartup, token.startup);
}

OfferedToken::~OfferedToken() {
    qunsetenv(kActivation);
    qunsetenv(kStartup);
}

}  // namespace skarnel
