#pragma once

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

namespace rebate {

// A listening socket on the loopback address.
class Listener {
 public:
  Listener() : socket_(::socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof(address);
    ::bind(socket_, reinterpret_cast<sockaddr*>(&address), size);
    ::listen(socket_, 8);
    ::getsockname(socket_, reinterpret_cast<sockaddr*>(&address), &size);
    port_ = ntohs(address.sin_port);
  }
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;
  ~Listener() { ::close(socket_); }

  int port() const { return port_; }
  // The next client's socket; negative when the listener was stopped.
  int Accept() const { return ::accept(socket_, nullptr, nullptr); }
  void Stop() const { ::shutdown(socket_, SHUT_RDWR); }

 private:
  int socket_;
  int port_ = 0;
};

// A port of the loopback address on which nothing listens.
inline int FreePort() {
  return Listener().port();
}

}  // namespace rebate
