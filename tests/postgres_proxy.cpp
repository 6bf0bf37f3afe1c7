#include "tests/postgres_proxy.h"

#include <netinet/tcp.h>

#include <array>
#include <cstring>
#include <optional>
#include <regex>

namespace rebate {
namespace {

constexpr char kQuery = 'Q';
constexpr char kSync = 'S';

// A socket that is closed with its owner and sends at once.
class Socket {
 public:
  explicit Socket(int socket) : socket_(socket) {
    const int on = 1;
    ::setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  }
  Socket(const Socket&) = delete;
  Socket& operator=(const Socket&) = delete;
  ~Socket() { ::close(socket_); }

  int get() const { return socket_; }
  // Lets both ends' waits end.
  void Stop() const { ::shutdown(socket_, SHUT_RDWR); }
  bool Receive(char* bytes, std::size_t count) const {
    return count == 0 || ::recv(socket_, bytes, count, MSG_WAITALL) == static_cast<ssize_t>(count);
  }
  void Send(std::string_view bytes) const {
    while (!bytes.empty()) {
      const ssize_t sent = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
      if (sent <= 0) return;
      bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
  }

 private:
  int socket_;
};

int ConnectTo(int port) {
  const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  ::connect(socket, reinterpret_cast<sockaddr*>(&address), sizeof address);
  return socket;
}

Text Length(std::size_t size) {
  const std::uint32_t length = htonl(static_cast<std::uint32_t>(size + sizeof length));
  Text bytes(sizeof length, '\0');
  std::memcpy(bytes.data(), &length, sizeof length);
  return bytes;
}

// What stands behind a message's length.
std::optional<Text> ReceiveBody(const Socket& driver) {
  std::uint32_t length = 0;
  if (!driver.Receive(reinterpret_cast<char*>(&length), sizeof length)) return std::nullopt;
  Text body(ntohl(length) - sizeof length, '\0');
  if (!driver.Receive(body.data(), body.size())) return std::nullopt;
  return body;
}

Text ToServersWords(Text text) {
  const auto flags = std::regex::icase | std::regex::optimize;
  static const std::pair<std::regex, const char*> kWords[] = {
      {std::regex(R"(if object_id\('tempdb\.\.#(\w+)'\) is not null\s+begin\s+drop table #\w+\s+end)", flags),
       "drop table if exists $1"},
      {std::regex("insert into #", flags), "insert into "},
      {std::regex("into #", flags), "into temp "},
      {std::regex("#TMP_", flags), "TMP_"},
      {std::regex(R"((\r?\n)(drop table|select \* into))", flags), "; $2"},
      {std::regex(R"(\+ isnull\()", flags), "|| coalesce("},
      // What the driver makes of @@identity, which it looks up by the name as it is written.
      {std::regex("null(?=as FSchemeIDNew)", flags), "lastval() "},
      {std::regex(R"re('"(\w+)"'::regclass)re", flags), "'$1'::regclass"},
  };
  for (const auto& [words, meant] : kWords) text = std::regex_replace(text, words, meant);
  return text;
}

bool IsToBeTranslated(std::string_view text) {
  return text.find('#') != std::string_view::npos || text.find("::regclass") != std::string_view::npos ||
         text.find("FSchemeIDNew") != std::string_view::npos || text.find("ISNULL(") != std::string_view::npos;
}

}  // namespace

PostgresProxy::PostgresProxy(int server_port) : server_port_(server_port) {
  accepting_ = std::thread([this] {
    for (int driver = 0; (driver = listener_.Accept()) >= 0;) {
      const std::lock_guard lock(mutex_);
      drivers_.push_back(driver);
      connections_.emplace_back([this, driver] { Serve(driver); });
    }
  });
}

PostgresProxy::~PostgresProxy() {
  listener_.Stop();
  accepting_.join();
  {
    const std::lock_guard lock(mutex_);
    for (const int driver : drivers_) ::shutdown(driver, SHUT_RDWR);
  }
  for (std::thread& connection : connections_) connection.join();
}

void PostgresProxy::Serve(int accepted) {
  const Socket driver(accepted);
  const Socket server(ConnectTo(server_port_));
  std::thread answers([&] {
    std::array<char, 65536> bytes;
    for (ssize_t got = 0; (got = ::recv(server.get(), bytes.data(), bytes.size(), 0)) > 0;) {
      driver.Send({bytes.data(), static_cast<std::size_t>(got)});
    }
    driver.Stop();
  });
  // The first message has no letter in front of it.
  if (const std::optional<Text> login = ReceiveBody(driver)) server.Send(Length(login->size()) + *login);
  for (char kind = 0; driver.Receive(&kind, 1);) {
    std::optional<Text> body = ReceiveBody(driver);
    if (!body) break;
    if (kind == kQuery && IsToBeTranslated(*body)) body = ToServersWords(*body);
    if (kind == kQuery || kind == kSync) ++round_trips_;
    server.Send(kind + Length(body->size()) + *body);
  }
  server.Stop();
  answers.join();
  const std::lock_guard lock(mutex_);
  std::erase(drivers_, accepted);
}

}  // namespace rebate
