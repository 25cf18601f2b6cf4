// Hostile texts, and witnesses of what they reach.
#pragma once

#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>
#include <vector>

namespace skarnel::test_page {

/// Listens on this machine and counts who comes.
class Listener {
  public:
    Listener() : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = ::htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        if (::bind(socket_, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
            ::listen(socket_, 64) != 0 ||
            ::getsockname(socket_, reinterpret_cast<sockaddr*>(&address), &size) != 0)
            ADD_FAILURE() << "cannot listen";
        port = ::ntohs(address.sin_port);
    }
    ~Listener() { ::close(socket_); }
    int connections() const {
        int count = 0;
        for (int c = ::accept(socket_, nullptr, nullptr); c >= 0;
             c = ::accept(socket_, nullptr, nullptr)) {
            ++count;
            ::close(c);
        }
        return count;
    }
    int port = 0;

  private:
    int socket_;
};

/// Notes whoever opens a file.
class Watch {
  public:
    explicit Watch(const std::string& path) : queue_(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
        if (::inotify_add_watch(queue_, path.c_str(), IN_OPEN | IN_ACCESS) < 0)
            ADD_FAILURE() << "cannot watch";
    }
    ~Watch() { ::close(queue_); }
    bool wasOpened() const {
        char events[4096];
        return ::read(queue_, events, sizeof events) > 0;
    }

  private:
    int queue_;
};

// 25 ways to name an address, by 8 addresses.
inline std::vector<std::string> payloads(const std::string& file, int port) {
    const std::string host = "127.0.0.1:" + std::to_string(port);
    const std::vector<std::string> addresses{
        "http://" + host + "/x", "https://" + host + "/x",
        "//" + host + "/x",      "file://" + file,
        "ftp://" + host + "/x",  "ws://" + host + "/x",
        "../../../" + file,      "javascript:fetch('http://" + host + "/x')"};
    const std::vector<std::string> ways{
        "<script src='@'></script>",
        "<script>location='@'</script>",
        "</span></p></body><script src=@></script>",
        "<img src='@'>",
        "<img src=x onerror=\"location='@'\">",
        "<svg onload=\"fetch('@')\"><image href='@'/></svg>",
        "<link rel=stylesheet href='@'>",
        "<style>@import '@';</style>",
        "</style><style>body{background:url(@)}</style>",
        "<iframe src='@'></iframe>",
        "<object data='@'></object>",
        "<embed src='@'>",
        "<a href='@' ping='@'>press</a>",
        "<meta http-equiv=refresh content='0;url=@'>",
        "<base href='@'><img src=a>",
        "<video poster='@' src='@' autoplay></video>",
        "<form action='@'><input autofocus onfocus=submit()></form>",
        "<!DOCTYPE x [<!ENTITY e SYSTEM '@'>]><x>&e;</x>",
        "<?xml-stylesheet href='@'?>",
        "&lt;img src=@&gt;&#60;img src=@&#62;&amp;",
        "\xE2\x80\xAE<gmi crs='@'>\xE2\x80\xAC",
        "\xE2\x81\xA6@\xE2\x81\xA9\xE2\x80\xAB@",
        "<body background='@'><BODY onload=alert(1)>",
        "%3Cscript src=@%3E <%= @ %> {{@}} ${@}",
        "<template><math><mtext><img src=@></mtext></math></template>-->]]>",
    };
    std::vector<std::string> all;
    for (std::string way : ways)
        for (const std::string& address : addresses) {
            std::string payload = way;
            for (std::size_t at = payload.find('@'); at != std::string::npos;
                 at = payload.find('@', at + address.size()))
                payload.replace(at, 1, address);
            all.push_back(payload);
        }
    return all;
}

}  // namespace skarnel::test_page
