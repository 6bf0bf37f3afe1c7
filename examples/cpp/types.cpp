// Asks an account for the rebate types of its suppliers:
//
//     cmake -S examples/cpp -B build/types && cmake --build build/types
//     build/types/types shop.db
#include <rebate.h>

#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>

namespace {

using Answer = std::unique_ptr<char, decltype(&rebate_free)>;

// A session on an account, closed at its end.
class Session {
 public:
  // Raises the answer of the library where there is no such account.
  explicit Session(const char* account) {
    const Answer error(rebate_open(account, 0, &session_), &rebate_free);
    if (error) throw std::runtime_error(error.get());
  }
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  ~Session() { rebate_close(session_); }

  std::string Call(const std::string& request) {
    return Answer(rebate_call(session_, request.c_str()), &rebate_free).get();
  }

 private:
  rebate_session session_ = 0;
};

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 2) {
    std::cerr << "usage: types ACCOUNT\n";
    return 2;
  }
  if (rebate_abi() < REBATE_ABI) throw std::runtime_error("the library is older than this program");
  Session session(argv[1]);
  std::cout << session.Call(R"({"op":"BaseInfoMgr.LoadRebateTypeData","args":{"lRebateClass":24}})") << '\n';
} catch (const std::exception& error) {
  std::cerr << "types: " << error.what() << '\n';
  return 1;
}
