#pragma once

// A folder on the disk, gone at the end.

#include <cstdio>
#include <filesystem>
#include <iterator>
#include <random>
#include <string>
#include <string_view>

#include "platform/files/FileContents.h"

namespace Vantrel::Testing {

// A folder of its own on the disk, gone at the end.
class TTemporaryFolder {
 public:
  TTemporaryFolder() {
    std::random_device random;
    do {
      fPath = std::filesystem::temp_directory_path() / ("vantrel-test-" + std::to_string(random()));
    } while (!std::filesystem::create_directory(fPath));
    fPath = std::filesystem::canonical(fPath);
  }
  ~TTemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(fPath, ignored);
  }
  TTemporaryFolder(const TTemporaryFolder&) = delete;
  TTemporaryFolder& operator=(const TTemporaryFolder&) = delete;

  const std::filesystem::path& Path() const { return fPath; }
  std::u16string File(std::string_view pName) const { return (fPath / pName).u16string(); }

  void Put(std::string_view pName, std::string_view pContents) const {
    std::FILE* file = std::fopen((fPath / pName).string().c_str(), "wb");
    std::fwrite(pContents.data(), 1, pContents.size(), file);
    std::fclose(file);
  }
  std::string Get(std::string_view pName) const { return Vantrel::ReadFileContents(File(pName), size_t{1} << 30); }

  // What lies in the folder, links not followed.
  size_t Count() const { return static_cast<size_t>(std::distance(std::filesystem::directory_iterator(fPath), {})); }

 private:
  std::filesystem::path fPath;
};

}  // namespace Vantrel::Testing
