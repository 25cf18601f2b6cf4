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

/// A hostile text, and what is read when it comes as HTML between two words.
struct Payload {
    std::string typed;
    std::string pasted;
};

inline std::string pageOf(const std::string& payload) {
    return "<html><body>before " + payload + " after</body></html>";
}

/// 25 ways to name an address, which stands for each ^, by 8 addresses. What is read of a way was
/// written down by the rules of HTML: elements, comments and declarations are no text, white space
/// is one space, a picture stands between two of them, and a second <body> begins a paragraph.
inline std::vector<Payload> payloadsWithText(const std::string& file, int port) {
    const std::string host = "127.0.0.1:" + std::to_string(port);
    const std::vector<std::string> addresses{
        "http://" + host + "/x", "https://" + host + "/x",
        "//" + host + "/x",      "file://" + file,
        "ftp://" + host + "/x",  "ws://" + host + "/x",
        "../../../" + file,      "javascript:fetch('http://" + host + "/x')"};
    const std::vector<Payload> ways{
        {"<script src='^'></script>", "before after"},
        {"<script>location='^'</script>", "before after"},
        {"</span></p></body><script src=^></script>", "before after"},
        {"<img src='^'>", "before  after"},
        {"<img src=x onerror=\"location='^'\">", "before  after"},
        {"<svg onload=\"fetch('^')\"><image href='^'/></svg>", "before after"},
        {"<link rel=stylesheet href='^'>", "before after"},
        {"<style>@import '^';</style>", "before after"},
        {"</style><style>body{background:url(^)}</style>", "before after"},
        {"<iframe src='^'></iframe>", "before after"},
        {"<object data='^'></object>", "before after"},
        {"<embed src='^'>", "before after"},
        {"<a href='^' ping='^'>press</a>", "before press after"},
        {"<meta http-equiv=refresh content='0;url=^'>", "before after"},
        {"<base href='^'><img src=a>", "before  after"},
        {"<video poster='^' src='^' autoplay></video>", "before after"},
        {"<form action='^'><input autofocus onfocus=submit()></form>", "before after"},
        {"<!DOCTYPE x [<!ENTITY e SYSTEM '^'>]><x>&e;</x>", "before ]>&e; after"},
        {"<?xml-stylesheet href='^'?>", "before after"},
        {"&lt;img src=^&gt;&#60;img src=^&#62;&amp;", "before <img src=^><img src=^>& after"},
        {"\xE2\x80\xAE<gmi crs='^'>\xE2\x80\xAC", "before \xE2\x80\xAE\xE2\x80\xAC after"},
        {"\xE2\x81\xA6^\xE2\x81\xA9\xE2\x80\xAB^",
         "before \xE2\x81\xA6^\xE2\x81\xA9\xE2\x80\xAB^ after"},
        {"<body background='^'><BODY onload=alert(1)>", "before \nafter"},
        {"%3Cscript src=^%3E <%= ^ %> {{^}} ${^}", "before %3Cscript src=^%3E {{^}} ${^} after"},
        {"<template><math><mtext><img src=^></mtext></math></template>-->]]>",
         "before -->]]> after"},
    };
    const auto filled = [](std::string way, const std::string& address) {
        for (std::size_t at = way.find('^'); at != std::string::npos;
             at = way.find('^', at + address.size()))
            way.replace(at, 1, address);
        return way;
    };
    std::vector<Payload> all;
    for (const Payload& way : ways)
        for (const std::string& address : addresses)
            all.push_back({filled(way.typed, address), filled(way.pasted, address)});
    return all;
}

inline std::vector<std::string> payloads(const std::string& file, int port) {
    std::vector<std::string> all;
    for (Payload& payload : payloadsWithText(file, port)) all.push_back(std::move(payload.typed));
    return all;
}

}  // namespace skarnel::test_page
