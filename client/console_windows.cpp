#include <fcntl.h>
#include <io.h>
#include <windows.h>
// Behind <windows.h>, which it stands on.
#include <shellapi.h>

#include <algorithm>
#include <array>
#include <iostream>
#include <optional>
#include <streambuf>

#include "client/console.h"
#include "platform/files/files.h"
#include "platform/values/text.h"

namespace rebate {
namespace {

Text FromSystem(std::wstring_view wide) {
  return FromWide(std::u16string(wide.begin(), wide.end()));
}

bool IsConsole(HANDLE handle) {
  DWORD mode = 0;
  return GetConsoleMode(handle, &mode) != FALSE;
}

std::size_t WidthOf(DWORD which) {
  CONSOLE_SCREEN_BUFFER_INFO shown;
  if (GetConsoleScreenBufferInfo(GetStdHandle(which), &shown) == FALSE) return 0;
  // A line that takes the last column as well would leave an empty one behind it.
  return static_cast<std::size_t>(std::max(shown.srWindow.Right - shown.srWindow.Left, 1));
}

// Writes UTF-8 to a console, whatever its code page is. Only whole lines go out before a flush, so that no character is
// torn.
class ConsoleOutput : public std::streambuf {
 public:
  explicit ConsoleOutput(HANDLE handle) : handle_(handle) {}

 protected:
  int_type overflow(int_type c) override {
    if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
    const char one = traits_type::to_char_type(c);
    return xsputn(&one, 1) == 1 ? c : traits_type::eof();
  }
  std::streamsize xsputn(const char* text, std::streamsize size) override {
    waiting_.append(text, static_cast<std::size_t>(size));
    if (waiting_.size() < kMuch) return size;
    const std::size_t line_end = waiting_.rfind('\n');
    return line_end == Text::npos || Write(line_end + 1) ? size : 0;
  }
  int sync() override { return Write(waiting_.size()) ? 0 : -1; }

 private:
  static constexpr std::size_t kMuch = 4096;

  // Writes that many bytes of what is waiting.
  bool Write(std::size_t size) {
    const std::u16string wide = ToWide(std::string_view(waiting_).substr(0, size));
    waiting_.erase(0, size);
    DWORD written = 0;
    return wide.empty() ||
           WriteConsoleW(handle_, wide.data(), static_cast<DWORD>(wide.size()), &written, nullptr) != FALSE;
  }

  HANDLE handle_;
  Text waiting_;
};

// Reads what is typed at a console as UTF-8, line by line; Ctrl+Z at the start of a line ends it.
class ConsoleInput : public std::streambuf {
 public:
  explicit ConsoleInput(HANDLE handle) : handle_(handle) {}

 protected:
  int_type underflow() override {
    constexpr wchar_t kEnd = 0x1A;
    std::wstring line;
    while (!line.ends_with(L'\n')) {
      std::array<wchar_t, 512> typed;
      DWORD size = 0;
      if (ReadConsoleW(handle_, typed.data(), static_cast<DWORD>(typed.size()), &size, nullptr) == FALSE || size == 0) {
        break;
      }
      line.append(typed.data(), size);
    }
    if (line.empty() || line.front() == kEnd) return traits_type::eof();
    line_ = FromSystem(line);
    setg(line_.data(), line_.data(), line_.data() + line_.size());
    return traits_type::to_int_type(line_.front());
  }

 private:
  HANDLE handle_;
  Text line_;
};

// Has a stream work through `Buffer` while it lives, where the stream is a console.
template <typename Buffer>
class Redirected {
 public:
  Redirected(std::ios& stream, DWORD which) : stream_(stream) {
    const HANDLE handle = GetStdHandle(which);
    if (!IsConsole(handle)) return;
    buffer_.emplace(handle);
    former_ = stream_.rdbuf(&*buffer_);
  }
  Redirected(const Redirected&) = delete;
  Redirected& operator=(const Redirected&) = delete;
  ~Redirected() {
    if (!buffer_) return;
    buffer_->pubsync();
    stream_.rdbuf(former_);
  }

  bool is_console() const { return buffer_.has_value(); }

 private:
  std::ios& stream_;
  std::optional<Buffer> buffer_;
  std::streambuf* former_ = nullptr;
};

}  // namespace

struct Console::State {
  Redirected<ConsoleInput> in{std::cin, STD_INPUT_HANDLE};
  Redirected<ConsoleOutput> out{std::cout, STD_OUTPUT_HANDLE};
  Redirected<ConsoleOutput> err{std::cerr, STD_ERROR_HANDLE};
};

Console::Console() : state_(std::make_unique<State>()) {
  for (const int file : {0, 1, 2}) _setmode(file, _O_BINARY);
  // Arguments may come from this variable by way of the narrow environment, which then has it in UTF-8.
  constexpr const char* kAccount = "REBATE_DSN";
  if (const auto account = files::EnvironmentVariable(kAccount)) _putenv((Text(kAccount) + '=' + *account).c_str());
}

Console::~Console() = default;

std::size_t Console::width() const {
  return WidthOf(STD_OUTPUT_HANDLE);
}

std::size_t Console::height() const {
  CONSOLE_SCREEN_BUFFER_INFO shown;
  if (GetConsoleScreenBufferInfo(GetStdHandle(STD_OUTPUT_HANDLE), &shown) == FALSE) return 0;
  return static_cast<std::size_t>(std::max(shown.srWindow.Bottom - shown.srWindow.Top, 1));
}

std::size_t Console::error_width() const {
  return WidthOf(STD_ERROR_HANDLE);
}

bool Console::errors_are_seen() const {
  return state_->err.is_console();
}

bool Console::can_ask() const {
  return state_->in.is_console() && state_->out.is_console();
}

std::vector<Text> TakeArguments(int argc, char** argv) {
  int count = 0;
  wchar_t** const wide = CommandLineToArgvW(GetCommandLineW(), &count);
  if (wide == nullptr) return {argv, argv + argc};
  std::vector<Text> arguments;
  for (int i = 0; i < count; ++i) arguments.push_back(FromSystem(wide[i]));
  LocalFree(wide);
  return arguments;
}

}  // namespace rebate
