#ifdef REBATE_HAS_ODBC

#include "tests/tds_server.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <utility>

#include "platform/values/ascii.h"
#include "platform/values/text.h"

namespace rebate {
namespace {

enum PacketType : char { kBatch = 1, kAnswer = 4, kAttention = 6, kTransaction = 14, kLogin = 16, kHandshake = 18 };
constexpr std::size_t kHeader = 8;
constexpr std::size_t kMostInPacket = 4000;
const Text kCollation("\x09\x04\xD0\x00\x34", 5);
const Text kDescriptor(8, '\1');  // of the one transaction

// Little-endian bytes.
template <typename T>
Text Bytes(T value) {
  Text bytes(sizeof(value), '\0');
  std::memcpy(bytes.data(), &value, sizeof(value));
  return bytes;
}
Text Byte(int value) {
  return Text(1, static_cast<char>(value));
}
Text Short(std::size_t value) {
  return Bytes(static_cast<std::uint16_t>(value));
}

Text Wide(std::string_view text) {
  const std::u16string wide = ToWide(text);
  return Text(reinterpret_cast<const char*>(wide.data()), wide.size() * 2);
}
// A wide text behind its length in units.
Text Named(std::string_view text) {
  return Byte(static_cast<int>(ToWide(text).size())) + Wide(text);
}

Text Token(int token, const Text& body) {
  return Byte(token) + Short(body.size()) + body;
}
Text Done(int status, std::uint64_t rows = 0) {
  return Byte(0xFD) + Short(static_cast<std::size_t>(status)) + Short(0) + Bytes(rows);
}
constexpr int kMore = 1, kFailed = 2, kCounted = 16, kCancelled = 32;

Text Message(std::int32_t number, int severity, std::string_view text) {
  return Token(severity > 10 ? 0xAA : 0xAB, Bytes(number) + Byte(1) + Byte(severity) + Short(ToWide(text).size()) +
                                                Wide(text) + Named("db") + Named("") + Bytes(std::int32_t{1}));
}

struct Column {
  const char* name;
  Text type;
  Text value;
  Text null = Text(1, '\0');
};

Text Columns(const std::vector<Column>& columns) {
  Text text = Byte(0x81) + Short(columns.size());
  for (const Column& column : columns) {
    text += Bytes(std::int32_t{0}) + Short(1) + column.type + Named(column.name);
  }
  return text;
}
Text Row(const std::vector<Column>& columns, Text Column::*cell) {
  Text text = Byte(0xD1);
  for (const Column& column : columns) text += column.*cell;
  return text;
}

template <typename T>
Text Sized(T value) {
  return Byte(sizeof(value)) + Bytes(value);
}

Text Kinds() {
  const Text text = Wide("促销 😀");
  const std::vector<Column> columns = {
      {"bit", "\x68\1", Sized(std::int8_t{1})},
      {"tinyint", "\x26\1", Sized(std::uint8_t{200})},
      {"smallint", "\x26\2", Sized(std::int16_t{-7})},
      {"int", "\x26\4", Sized(std::int32_t{2147483647})},
      {"bigint", "\x26\x08", Sized(std::int64_t{9007199254740993})},
      {"money", "\x6E\x08", Byte(8) + Bytes(std::int32_t{-1}) + Bytes(std::int32_t{-12345678})},
      {"smallmoney", "\x6E\4", Sized(std::int32_t{15000})},
      {"decimal", "\x6A\x09\x12\4", Byte(9) + Byte(1) + Bytes(std::int64_t{123456789012345678})},
      {"numeric", "\x6C\5\x09\2", Byte(5) + Byte(0) + Bytes(std::int32_t{5})},
      {"real", "\x6D\4", Sized(1.5f)},
      {"float", "\x6D\x08", Sized(0.1)},
      {"datetime", "\x6F\x08", Byte(8) + Bytes(std::int32_t{46079}) + Bytes(std::int32_t{300 * 3600 * 12})},
      {"date", "\x28", Byte(3) + Bytes(std::int32_t{739674}).substr(0, 3)},
      {"nvarchar", Byte(0xE7) + Short(200) + kCollation, Short(text.size()) + text, "\xFF\xFF"},
  };
  return Columns(columns) + Row(columns, &Column::value) + Row(columns, &Column::null) + Done(kCounted, 2);
}

Text TransactionChange(int kind) {
  const bool begins = kind == 8;
  return Token(0xE3, Byte(kind) + (begins ? Byte(8) + kDescriptor + Byte(0) : Byte(0) + Byte(8) + kDescriptor));
}

Text Welcome() {
  const Text product = "Microsoft SQL Server";
  return Token(0xE3, Byte(1) + Named("shop") + Named("master")) +
         Token(0xE3, Byte(7) + Byte(5) + kCollation + Byte(0)) +
         Token(0xAD, Byte(1) + Text("\x74\0\0\4", 4) + Named(product) + Text("\x0F\0\7\xD0", 4)) + Done(0);
}

const Text kNoAnswer = "none";

// Version 15, no encryption.
const Text kHandshakeAnswer("\0\0\x0B\0\6\1\0\x11\0\1\xFF\x0F\0\7\xD0\0\0\2", 18);

bool Receive(int client, Text& bytes, std::size_t count) {
  bytes.assign(count, '\0');
  return count == 0 || ::recv(client, bytes.data(), count, MSG_WAITALL) == static_cast<ssize_t>(count);
}

struct Request {
  int type;
  Text body;
};

std::optional<Request> ReceiveRequest(int client) {
  Request request{};
  for (bool last = false; !last;) {
    Text header, body;
    if (!Receive(client, header, kHeader)) return std::nullopt;
    const auto length =
        static_cast<std::size_t>(static_cast<unsigned char>(header[2]) << 8 | static_cast<unsigned char>(header[3]));
    if (length < kHeader || !Receive(client, body, length - kHeader)) return std::nullopt;
    request.type = header[0];
    request.body += body;
    last = (header[1] & 1) != 0;
  }
  return request;
}

void Send(int client, const Text& answer) {
  for (std::size_t at = 0; at < answer.size(); at += kMostInPacket) {
    const Text part = answer.substr(at, kMostInPacket);
    const std::size_t length = part.size() + kHeader;
    const int last = at + kMostInPacket >= answer.size() ? 1 : 0;
    const Text packet = Byte(kAnswer) + Byte(last) + Byte(static_cast<int>(length >> 8)) +
                        Byte(static_cast<int>(length & 255)) + Text("\0\0\1\0", 4) + part;
    ::send(client, packet.data(), packet.size(), MSG_NOSIGNAL);
  }
}

// The body behind the headers that a request starts with.
Text WithoutHeaders(const Text& body) {
  std::uint32_t length = 0;
  std::memcpy(&length, body.data(), std::min(sizeof(length), body.size()));
  return body.substr(std::min<std::size_t>(length, body.size()));
}

Text FromBytes(const Text& bytes) {
  std::u16string wide(bytes.size() / 2, u'\0');
  std::memcpy(wide.data(), bytes.data(), wide.size() * 2);
  return FromWide(wide);
}

}  // namespace

TdsServer::TdsServer() {
  thread_ = std::thread([this] {
    for (int client = 0; (client = listener_.Accept()) >= 0; ::close(client)) {
      client_ = client;
      Serve(client);
      client_ = -1;
    }
  });
}

TdsServer::~TdsServer() {
  listener_.Stop();
  thread_.join();
}

void TdsServer::CloseClient() {
  ::shutdown(client_, SHUT_RDWR);
  while (client_ >= 0) std::this_thread::yield();
}

Text TdsServer::password() {
  const std::lock_guard lock(mutex_);
  return password_;
}

std::vector<Text> TdsServer::TakeRequests() {
  const std::lock_guard lock(mutex_);
  return std::exchange(requests_, {});
}

void TdsServer::Note(const Text& request) {
  const std::lock_guard lock(mutex_);
  requests_.push_back(request);
}

void TdsServer::Serve(int client) {
  open_transactions_ = 0;
  while (const std::optional<Request> request = ReceiveRequest(client)) {
    Text answer;
    if (request->type == kHandshake) answer = kHandshakeAnswer;
    if (request->type == kLogin) answer = AnswerLogin(request->body);
    if (request->type == kAttention) answer = Done(kCancelled);
    if (request->type == kTransaction) answer = AnswerTransaction(WithoutHeaders(request->body));
    if (request->type == kBatch) answer = Answer(FromBytes(WithoutHeaders(request->body)));
    if (request->type == kBatch && answer == kNoAnswer) continue;
    if (answer.empty()) return;
    Send(client, answer);
  }
}

// The password stands at the place that the fixed part names, each of its bytes with its halves swapped and flipped.
Text TdsServer::AnswerLogin(const Text& request) {
  std::uint16_t place = 0, units = 0;
  std::memcpy(&place, request.data() + 44, sizeof(place));
  std::memcpy(&units, request.data() + 46, sizeof(units));
  Text bytes = request.substr(place, units * std::size_t{2});
  for (char& byte : bytes) {
    const int plain = static_cast<unsigned char>(byte) ^ 0xA5;
    byte = static_cast<char>(plain << 4 | plain >> 4);
  }
  const std::lock_guard lock(mutex_);
  password_ = FromBytes(bytes);
  if (login_error_ == 0) return Welcome();
  return Message(login_error_, 14, login_error_ == 4060 ? "Cannot open it." : "Login failed for user 'sa'.") +
         Done(kFailed);
}

Text TdsServer::AnswerTransaction(const Text& request) {
  constexpr char kBegin = 5, kCommit = 7;
  const char kind = request[0];
  Note(kind == kBegin ? "begin" : kind == kCommit ? "commit" : "rollback");
  const bool begins_another = kind != kBegin && (request[3] & 1) != 0;
  open_transactions_ = kind == kBegin || begins_another ? 1 : 0;
  const Text ended = kind == kBegin ? "" : TransactionChange(kind == kCommit ? 9 : 10);
  return ended + (open_transactions_ != 0 ? TransactionChange(8) : "") + Done(0);
}

Text OneNumber(std::int32_t number) {
  const std::vector<Column> columns = {{"n", "\x26\4", Sized(number)}};
  return Columns(columns) + Row(columns, &Column::value) + Done(kCounted, 1);
}

Text TdsServer::AnswerInserts(const Text& text) {
  if (text.find("'vanish'") != Text::npos) return {};
  std::vector<Text> inserts = Split(text, ';');
  std::erase_if(inserts, [](const Text& insert) { return insert.find("insert") == Text::npos; });
  Text answer;
  for (const Text& insert : inserts) {
    const int more = &insert == &inserts.back() ? 0 : kMore;
    if (insert.find("'deadlock'") != Text::npos) return answer + Answer("deadlock");
    answer += insert.find("'refused'") == Text::npos
                  ? Done(more | kCounted, 1)
                  : Message(2627, 14, "Violation by " + Text(TrimWhite(insert))) + Done(more | kFailed);
  }
  return answer;
}

Text TdsServer::Answer(const Text& text) {
  Note(text);
  if (text.starts_with("insert into")) return AnswerInserts(text);
  if (text.find("'CodePage'") != Text::npos && code_page_ != 0) return OneNumber(code_page_);
  if (refuses_options_ && text.starts_with("set ") && text.find(" set ") != Text::npos) {
    return Message(156, 15, "Incorrect syntax near an option.") + Done(kFailed);
  }
  if (text == "wait") return kNoAnswer;
  if (text.starts_with("error ")) {
    return Message(std::stoi(text.substr(6)), 16, "Refused: " + text) + Done(kFailed);
  }
  if (text == "kinds") return Kinds();
  if (text == "vanish") return {};
  if (text == "unknown") return Message(207, 16, "Invalid column name 'abc'.") + Done(kFailed);
  if (text == "duplicate") {
    return Done(kMore | kCounted, 1) + Message(2627, 14, "Violation of PRIMARY KEY constraint 'pk'.") +
           Message(3621, 0, "The statement has been terminated.") + Done(kFailed);
  }
  if (text == "deadlock") {
    open_transactions_ = 0;
    return TransactionChange(10) + Message(1205, 13, "Rerun the transaction.") + Done(kFailed);
  }
  if (text.starts_with("select @")) return OneNumber(open_transactions_);
  if (text.starts_with("select") && shown_ >= 0) return OneNumber(shown_);
  if (text.starts_with("select")) return Message(-shown_, 16, "Refused.") + Done(kFailed);
  return Done(0);
}

}  // namespace rebate

#endif
