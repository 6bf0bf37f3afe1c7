#include <iconv.h>

#include <array>
#include <cerrno>
#include <memory>
#include <stdexcept>

#include "platform/values/encoding.h"

namespace rebate {
namespace {

struct CloseConverter {
  void operator()(iconv_t converter) const { iconv_close(converter); }
};
using Converter = std::unique_ptr<std::remove_pointer_t<iconv_t>, CloseConverter>;

Converter OpenConverter() {
  const iconv_t converter = iconv_open("UTF-8", "GB18030");
  if (converter == reinterpret_cast<iconv_t>(-1)) throw std::runtime_error("This system can't read GB18030");
  return Converter(converter);
}

}  // namespace

Decoded FromGb18030(std::string_view bytes) {
  const Converter converter = OpenConverter();
  Decoded decoded;
  std::array<char, 65536> buffer;
  // iconv takes the bytes as changeable and leaves them alone.
  char* from = const_cast<char*>(bytes.data());
  std::size_t left = bytes.size();
  while (left > 0) {
    char* to = buffer.data();
    std::size_t room = buffer.size();
    const bool stopped = iconv(converter.get(), &from, &left, &to, &room) == static_cast<std::size_t>(-1);
    const int reason = errno;
    decoded.text.append(buffer.data(), buffer.size() - room);
    if (!stopped || reason == E2BIG) continue;
    decoded.whole = false;
    break;
  }
  return decoded;
}

}  // namespace rebate
