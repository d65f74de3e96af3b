#pragma once

// What conditions ask of a file beyond its listing: contents, the data of documents, broken links. The search engine
// answers.

#include <cstdint>
#include <string>
#include <string_view>

#include "model/columns/MetaData.h"

namespace Vantrel::Search {

class TSearchItem;

// The kind of a property's values.
enum class TPropertyKind : uint8_t { pkText, pkTexts, pkNumber, pkDate };

// A property that stands inside a file: in a document, a picture, or a piece of music.
enum class TFileProperty : uint8_t {
  fpCreator,
  fpKeywords,
  fpDateTaken,
  fpTitle,
  fpSubject,
  fpComment,
  fpCategory,
  fpCompany,
  fpApplication,
  fpLanguage,
  fpPages,
  fpWords,
  fpWidth,
  fpHeight,
  fpCameraMaker,
  fpCameraModel,
  fpArtist,
  fpAlbum,
  fpGenre,
  fpYear,
  fpTrack,
  fpDuration,
  fpBitRate,
  fpSampleRate,
  fpChannels,
  fpCount
};

struct TFilePropertyInfo {
  TFileProperty fProperty;
  std::u16string_view fName;  // after "mdata:"; letter case does not count
  TPropertyKind fKind;
  std::string_view fMeaning;  // with the unit, in words for the user
};

const TFilePropertyInfo& FilePropertyInfo(TFileProperty pProperty);

// What a condition on contents looks for. It lives as long as its condition and never changes. So its address may key
// what an engine prepares for it.
struct TContentSearch {
  std::u16string fText;  // the text, or the regular expression
  bool fIsRegEx = false;
  bool fCaseSensitive = false;  // regular expressions are always case-sensitive unless they say otherwise
};

// Answers for the item that is being matched, on demand. Each thread of a search has its own. No answer throws: a file
// that cannot be read has no contents and no properties, and the engine keeps the error.
class IFileFacts {
 public:
  virtual ~IFileFacts() = default;
  // Whether the file's contents match. False for a folder, and for a file that cannot be read.
  virtual bool ContentsMatch(TSearchItem& pItem, const TContentSearch& pSearch) = 0;
  // "No value" if the file has none. pkText: text; pkTexts: texts joined with "; "; pkNumber: int64_t; pkDate: a time.
  virtual TMetaDataValue GetProperty(TSearchItem& pItem, TFileProperty pProperty) = 0;
  // Whether the item is a symbolic link, a junction or a shortcut whose target does not exist.
  virtual bool IsInvalidShortcut(TSearchItem& pItem) = 0;
  // Whether the item is a folder without any entry.
  virtual bool IsEmptyFolder(TSearchItem& pItem) = 0;
  // The owner's account name, for an item whose listing has none. Empty when unknown.
  virtual std::u16string GetOwner(TSearchItem& pItem) = 0;
};

}  // namespace Vantrel::Search
