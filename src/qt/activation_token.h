// What a desktop gives a program that a person starts, so that its window may come to the front.
#pragma once

#include <QByteArray>

namespace skarnel {

/// A desktop that guards the focus raises only the window that shows such a token; without one it
/// tells the person at most that the window is ready. Both parts may be empty. The toolkit asks for
/// the one of Wayland whenever a window is to be activated, for that of X11 so far when it starts.
struct ActivationToken {
    QByteArray activation;  // XDG_ACTIVATION_TOKEN, on Wayland
    QByteArray startup;     // DESKTOP_STARTUP_ID, on X11

    /// The one that this process was started with. To be read before the toolkit starts, which
    /// takes it out of the environment.
    static ActivationToken ofEnvironment();

    friend bool operator==(const ActivationToken&, const ActivationToken&) = default;
};

/// While it lives, the token is in this process's environment, where the toolkit looks when a
/// window asks to be activated. Then the environment is without any: a token is good once.
class OfferedToken {
  public:
    explicit OfferedToken(const ActivationToken& token);
    OfferedToken(const OfferedToken&) = delete;
    OfferedToken& operator=(const OfferedToken&) = delete;
    ~OfferedToken();
};

}  // namespace skarnel
