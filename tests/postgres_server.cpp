#include "tests/postgres_server.h"

#include <pwd.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <utility>

#include "tests/loopback.h"

namespace rebate {
namespace {

namespace fs = std::filesystem;

Text FindPrograms() {
  std::error_code ignored;
  for (const fs::directory_entry& version : fs::directory_iterator("/usr/lib/postgresql", ignored)) {
    if (fs::exists(version.path() / "bin/initdb")) return version.path() / "bin/";
  }
  return {};
}

}  // namespace

std::unique_ptr<PostgresServer> PostgresServer::Start() {
  const Text programs = FindPrograms();
  if (programs.empty() || FindDriver("psqlodbcw.so").empty()) return nullptr;
  std::unique_ptr<PostgresServer> server(new PostgresServer(programs));
  if (!server->Run("initdb -D data -N -A scram-sha-256 -U shop --pwfile=password -E UTF8 --no-locale")) return nullptr;
  server->Restart();
  return server;
}

PostgresServer::PostgresServer(Text programs) : programs_(std::move(programs)), port_(FreePort()) {
  Text directory = fs::temp_directory_path() / "rebate-server-XXXXXX";
  if (::mkdtemp(directory.data()) == nullptr) return;
  directory_ = directory;
  std::ofstream(directory_ + "/password") << kPassword << '\n';
  const passwd* user = ::geteuid() == 0 ? ::getpwnam("postgres") : nullptr;
  if (user != nullptr && ::chown(directory_.c_str(), user->pw_uid, user->pw_gid) != 0) directory_.clear();
}

PostgresServer::~PostgresServer() {
  if (directory_.empty()) return;
  Kill();
  std::error_code ignored;
  fs::remove_all(directory_, ignored);
}

bool PostgresServer::Run(const Text& command) const {
  const Text user = ::geteuid() == 0 ? "runuser -u postgres -- " : "";
  const Text line = "cd '" + directory_ + "' && " + user + programs_ + command + " >>'" + directory_ + "/output' 2>&1";
  return std::system(line.c_str()) == 0;
}

Text PostgresServer::ConnectionText(const Text& password, int port) {
  return "Driver=" + FindDriver("psqlodbcw.so") + ";Server=127.0.0.1;Port=" + std::to_string(port) +
         ";Database=postgres;UID=shop;PWD={" + password + "};SSLmode=disable;BoolsAsChar=0";
}

void PostgresServer::Kill() const {
  Run("pg_ctl -D data -w -m immediate stop");
}

void PostgresServer::Restart() const {
  Run("pg_ctl -D data -w -l log -o '-p " + std::to_string(port_) +
      " -c listen_addresses=127.0.0.1 -c fsync=off -c unix_socket_directories=" + directory_ + "' start");
}

Text FindDriver(const Text& library) {
  for (const char* folder : {"/usr/lib/x86_64-linux-gnu/odbc/", "/usr/lib/aarch64-linux-gnu/odbc/", "/usr/lib/odbc/",
                             "/usr/lib64/", "/usr/local/lib/"}) {
    if (fs::exists(folder + library)) return folder + library;
  }
  return {};
}

}  // namespace rebate
