// Office documents are archives with a document of properties in them: "docProps/core.xml" and "docProps/app.xml", or
// "meta.xml" in those of the OpenDocument kind.

#include <zip.h>

#include <algorithm>
#include <exception>
#include <memory>
#include <string>

#include "search/metadata/FileProperties.h"
#include "search/metadata/XMLTexts.h"

namespace Vantrel::Search {

namespace {

using enum TFileProperty;

constexpr uint64_t kLargestPart = uint64_t{4} << 20;  // unpacked

// Gives libzip access to the file. libzip is written in C, so exceptions wait until it has returned.
class TArchiveBytes {
 public:
  explicit TArchiveBytes(TFileBytes& pFile) : fFile(pFile) { zip_error_init(&fError); }
  ~TArchiveBytes() { zip_error_fini(&fError); }
  TArchiveBytes(const TArchiveBytes&) = delete;
  TArchiveBytes& operator=(const TArchiveBytes&) = delete;

  static zip_int64_t Call(void* pBytes, void* pData, zip_uint64_t pLength, zip_source_cmd_t pCommand) {
    auto& bytes = *static_cast<TArchiveBytes*>(pBytes);
    try {
      return bytes.Answer(pData, pLength, pCommand);
    } catch (...) {
      bytes.fFailure = std::current_exception();
      zip_error_set(&bytes.fError, ZIP_ER_READ, 0);
      return -1;
    }
  }
  void Rethrow() const {
    if (fFailure) std::rethrow_exception(fFailure);
  }

 private:
  zip_int64_t Answer(void* pData, zip_uint64_t pLength, zip_source_cmd_t pCommand) {
    switch (pCommand) {
      case ZIP_SOURCE_OPEN:
        fPlace = 0;
        return 0;
      case ZIP_SOURCE_READ: {
        const size_t read = fFile.ReadAt(fPlace, static_cast<char*>(pData), static_cast<size_t>(pLength));
        fPlace += read;
        return static_cast<zip_int64_t>(read);
      }
      case ZIP_SOURCE_CLOSE:
      case ZIP_SOURCE_FREE:
        return 0;
      case ZIP_SOURCE_STAT: {
        auto* stat = static_cast<zip_stat_t*>(pData);
        zip_stat_init(stat);
        stat->valid = ZIP_STAT_SIZE;
        stat->size = fFile.Size();
        return sizeof(*stat);
      }
      case ZIP_SOURCE_SEEK: {
        const zip_int64_t place = zip_source_seek_compute_offset(fPlace, fFile.Size(), pData, pLength, &fError);
        if (place >= 0) fPlace = static_cast<uint64_t>(place);
        return place < 0 ? -1 : 0;
      }
      case ZIP_SOURCE_TELL:
        return static_cast<zip_int64_t>(fPlace);
      case ZIP_SOURCE_ERROR:
        return zip_error_to_data(&fError, pData, pLength);
      case ZIP_SOURCE_SUPPORTS:
        return ZIP_SOURCE_SUPPORTS_SEEKABLE;
      default:
        zip_error_set(&fError, ZIP_ER_OPNOTSUPP, 0);
        return -1;
    }
  }

  TFileBytes& fFile;
  uint64_t fPlace = 0;
  zip_error_t fError;
  std::exception_ptr fFailure;
};

// An entry of the archive; empty when there is none or it is too large.
std::string PartOf(zip_t* pArchive, const char* pName) {
  const zip_int64_t index = zip_name_locate(pArchive, pName, 0);
  zip_stat_t stat;
  if (index < 0 || zip_stat_index(pArchive, static_cast<zip_uint64_t>(index), 0, &stat) != 0) return {};
  if ((stat.valid & ZIP_STAT_SIZE) == 0 || stat.size > kLargestPart) return {};
  const std::unique_ptr<zip_file_t, decltype(&zip_fclose)> part(
      zip_fopen_index(pArchive, static_cast<zip_uint64_t>(index), 0), zip_fclose);
  std::string text(static_cast<size_t>(stat.size), '\0');
  const zip_int64_t read = part ? zip_fread(part.get(), text.data(), text.size()) : 0;
  text.resize(static_cast<size_t>(std::max<zip_int64_t>(read, 0)));
  return text;
}

struct TElement {
  std::string_view fName;
  TFileProperty fProperty;
};

// Of both parts of a document. No name stands in both.
constexpr TElement kOfficeOpen[] = {
    {"title", fpTitle},         {"subject", fpSubject},   {"creator", fpCreator},   {"keywords", fpKeywords},
    {"description", fpComment}, {"category", fpCategory}, {"language", fpLanguage}, {"Application", fpApplication},
    {"Company", fpCompany},     {"Pages", fpPages},       {"Words", fpWords}};
constexpr TElement kOpenDocument[] = {
    {"title", fpTitle},           {"subject", fpSubject},     {"initial-creator", fpCreator},
    {"keyword", fpKeywords},      {"description", fpComment}, {"language", fpLanguage},
    {"generator", fpApplication}, {"page-count", fpPages},    {"word-count", fpWords}};

template <size_t tCount>
void ReadPart(std::string_view pPart, const TElement (&pElements)[tCount], TFileProperties& pProperties) {
  ReadXMLTexts(pPart, [&](const TXMLText& pText) {
    const std::string_view name = pText.fAttribute.empty() ? pText.fElement : pText.fAttribute;
    const auto found = std::find_if(std::begin(pElements), std::end(pElements),
                                    [&](const TElement& pElement) { return pElement.fName == name; });
    // Of the attributes, only the counts of an OpenDocument are properties.
    if (found == std::end(pElements) || (!pText.fAttribute.empty() && pText.fElement != "document-statistic")) return;
    switch (FilePropertyInfo(found->fProperty).fKind) {
      case TPropertyKind::pkNumber:
        return pProperties.AddNumber(found->fProperty, pText.fText);
      case TPropertyKind::pkTexts:
        return pProperties.AddList(found->fProperty, TextOf(pText.fText));
      default:
        pProperties.AddText(found->fProperty, pText.fText);
    }
  });
}

}  // namespace

void ReadOfficeProperties(TFileBytes& pFile, TFileProperties& pProperties) {
  TArchiveBytes bytes(pFile);
  zip_error_t error;
  zip_error_init(&error);
  zip_source_t* source = zip_source_function_create(TArchiveBytes::Call, &bytes, &error);
  zip_t* opened = source ? zip_open_from_source(source, ZIP_RDONLY, &error) : nullptr;
  zip_error_fini(&error);
  if (source && !opened) zip_source_free(source);
  {
    const std::unique_ptr<zip_t, decltype(&zip_discard)> archive(opened, zip_discard);
    if (archive) {
      const std::string openDocument = PartOf(opened, "meta.xml");
      if (!openDocument.empty()) ReadPart(openDocument, kOpenDocument, pProperties);
      for (const char* part : {"docProps/core.xml", "docProps/app.xml"}) {
        const std::string text = PartOf(opened, part);
        if (!text.empty()) ReadPart(text, kOfficeOpen, pProperties);
      }
    }
  }
  bytes.Rethrow();
}

}  // namespace Vantrel::Search
