#pragma once

#include <memory>

#include "platform/values/types.h"

namespace rebate {

// A PostgreSQL server of the test's own on the loopback address, in a temporary directory that goes with it.
class PostgresServer {
 public:
  static constexpr const char* kPassword = "s3cret;word";

  // Starts one; null where server or driver isn't installed.
  static std::unique_ptr<PostgresServer> Start();
  PostgresServer(const PostgresServer&) = delete;
  PostgresServer& operator=(const PostgresServer&) = delete;
  ~PostgresServer();

  int port() const { return port_; }
  Text ConnectionText(const Text& password = kPassword) const { return ConnectionText(password, port_); }
  // Likewise, where something stands between at `port`.
  Text ConnectionThrough(int port) const { return ConnectionText(kPassword, port); }
  // Stops it as a crash would.
  void Kill() const;
  void Restart() const;

 private:
  explicit PostgresServer(Text programs);
  // Runs a command of the server's as a user who may.
  bool Run(const Text& command) const;
  static Text ConnectionText(const Text& password, int port);

  Text programs_;
  Text directory_;
  int port_;
};

// The path of an installed ODBC driver's library; empty where there is none.
Text FindDriver(const Text& library);

}  // namespace rebate
