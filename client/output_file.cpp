#include "client/output_file.h"

#include <filesystem>

#include "platform/automation/error.h"
#include "platform/files/files.h"

namespace rebate {
namespace {

Text WithoutLinks(const Text& path) {
  std::error_code error;
  const std::filesystem::path target = std::filesystem::canonical(files::ToPath(path), error);
  return error ? path : files::FromPath(target);
}

}  // namespace

OutputFile::OutputFile(Text path) : path_(std::move(path)), target_(WithoutLinks(path_)), writing_(target_) {
  const files::Kind kind = files::KindOf(target_);
  if (kind == files::Kind::Missing || kind == files::Kind::File) {
    writing_ = files::NameOfThisProcess(target_ + ".writing");
  }
  stream_.open(files::ToPath(writing_), std::ios::binary);
  if (!stream_) Fail();
}

OutputFile::~OutputFile() {
  stream_.close();
  if (writing_ != target_) files::Remove(writing_);
}

void OutputFile::Finish() {
  stream_.close();
  if (!stream_) Fail();
  if (writing_ == target_) return;
  std::error_code error;
  std::filesystem::rename(files::ToPath(writing_), files::ToPath(target_), error);
  if (error) Fail();
  writing_ = target_;
}

void OutputFile::Fail() const {
  throw Error(error_number::kInvalidCall, "rebate", "Can't write " + path_);
}

}  // namespace rebate
