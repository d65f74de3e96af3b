// Reads the tags and the sound properties of music, through TagLib.

#include <taglib/audioproperties.h>
#include <taglib/fileref.h>
#include <taglib/tag.h>
#include <taglib/tiostream.h>
#include <taglib/tpropertymap.h>
#include <taglib/tstringlist.h>

#include <algorithm>
#include <exception>
#include <limits>
#include <string>

#include "search/metadata/FileProperties.h"

namespace Vantrel::Search {

namespace {

using enum TFileProperty;

// Gives TagLib access to the file. TagLib does not expect exceptions, so they wait until it has returned. Behind a
// failure, the file seems to end.
class TMusicStream final : public TagLib::IOStream {
 public:
  explicit TMusicStream(TFileBytes& pFile) : fFile(pFile) {}
  void Rethrow() const {
    if (fFailure) std::rethrow_exception(fFailure);
  }

  // Without a name TagLib looks at the contents.
  TagLib::FileName name() const override { return ""; }
  TagLib::ByteVector readBlock(unsigned long pLength) override {
    if (fFailure || fPlace >= fFile.Size()) return {};
    try {
      const std::string bytes = fFile.TextAt(fPlace, static_cast<size_t>(pLength));
      fPlace += bytes.size();
      return {bytes.data(), static_cast<unsigned>(bytes.size())};
    } catch (...) {
      fFailure = std::current_exception();
      return {};
    }
  }
  void seek(long pOffset, Position pFrom) override {
    const int64_t from = pFrom == Beginning ? 0 : static_cast<int64_t>(pFrom == Current ? fPlace : fFile.Size());
    fPlace = static_cast<uint64_t>(std::max<int64_t>(from + pOffset, 0));
  }
  // TagLib counts in "long", which has 32 bits on Windows. The rest of a larger file is not seen there.
  long tell() const override { return Clamped(fPlace); }
  long length() override { return Clamped(fFile.Size()); }
  bool readOnly() const override { return true; }
  bool isOpen() const override { return true; }
  void writeBlock(const TagLib::ByteVector&) override {}
  void insert(const TagLib::ByteVector&, unsigned long, unsigned long) override {}
  void removeBlock(unsigned long, unsigned long) override {}
  void truncate(long) override {}

 private:
  static long Clamped(uint64_t pPlace) {
    return static_cast<long>(std::min<uint64_t>(pPlace, std::numeric_limits<long>::max()));
  }

  TFileBytes& fFile;
  uint64_t fPlace = 0;
  std::exception_ptr fFailure;
};

std::string Utf8(const TagLib::String& pText) {
  return pText.to8Bit(true);
}

void AddPositive(TFileProperties& pProperties, TFileProperty pProperty, int64_t pNumber) {
  if (pNumber > 0) pProperties.AddNumber(pProperty, pNumber);
}

}  // namespace

void ReadMusicProperties(TFileBytes& pFile, TFileProperties& pProperties) {
  TMusicStream stream(pFile);
  {
    const TagLib::FileRef music(&stream, true, TagLib::AudioProperties::Fast);
    if (const TagLib::Tag* tag = music.isNull() ? nullptr : music.tag()) {
      pProperties.AddText(fpTitle, Utf8(tag->title()));
      pProperties.AddText(fpAlbum, Utf8(tag->album()));
      pProperties.AddText(fpGenre, Utf8(tag->genre()));
      pProperties.AddText(fpComment, Utf8(tag->comment()));
      AddPositive(pProperties, fpYear, tag->year());
      AddPositive(pProperties, fpTrack, tag->track());
      TagLib::PropertyMap texts = tag->properties();
      TagLib::StringList artists = texts["ARTIST"];  // of one piece
      if (artists.isEmpty()) artists.append(tag->artist());
      for (const TagLib::String& artist : artists) {
        pProperties.AddText(fpArtist, Utf8(artist));
        pProperties.AddText(fpCreator, Utf8(artist));
      }
    }
    if (const TagLib::AudioProperties* sound = music.isNull() ? nullptr : music.audioProperties()) {
      AddPositive(pProperties, fpDuration, sound->lengthInSeconds());
      AddPositive(pProperties, fpBitRate, sound->bitrate());
      AddPositive(pProperties, fpSampleRate, sound->sampleRate());
      AddPositive(pProperties, fpChannels, sound->channels());
    }
  }
  stream.Rethrow();
}

}  // namespace Vantrel::Search
