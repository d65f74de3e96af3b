#include "search/query/FileFacts.h"

#include <array>

namespace Vantrel::Search {

namespace {

using enum TFileProperty;
using enum TPropertyKind;

constexpr std::array<TFilePropertyInfo, static_cast<size_t>(fpCount)> kProperties = {{
    {fpCreator, u"Creator", pkTexts, "who made it: author, artist or photographer"},
    {fpKeywords, u"Keywords", pkTexts, "keywords or tags"},
    {fpDateTaken, u"DateTaken", pkDate, "when a photo was taken"},
    {fpTitle, u"Title", pkText, "title"},
    {fpSubject, u"Subject", pkText, "subject"},
    {fpComment, u"Comment", pkText, "comment or description"},
    {fpCategory, u"Category", pkText, "category of an office document"},
    {fpCompany, u"Company", pkText, "company of an office document"},
    {fpApplication, u"Application", pkText, "the program that made it"},
    {fpLanguage, u"Language", pkText, "language of a document"},
    {fpPages, u"Pages", pkNumber, "pages of a document"},
    {fpWords, u"Words", pkNumber, "words of a document"},
    {fpWidth, u"Width", pkNumber, "width of a picture in pixels"},
    {fpHeight, u"Height", pkNumber, "height of a picture in pixels"},
    {fpCameraMaker, u"CameraMaker", pkText, "maker of the camera"},
    {fpCameraModel, u"CameraModel", pkText, "model of the camera"},
    {fpArtist, u"Artist", pkTexts, "artist of a piece of music"},
    {fpAlbum, u"Album", pkText, "album of a piece of music"},
    {fpGenre, u"Genre", pkText, "genre of a piece of music"},
    {fpYear, u"Year", pkNumber, "year of a piece of music"},
    {fpTrack, u"Track", pkNumber, "track number"},
    {fpDuration, u"Duration", pkNumber, "length of a piece of music in seconds"},
    {fpBitRate, u"BitRate", pkNumber, "kilobits per second"},
    {fpSampleRate, u"SampleRate", pkNumber, "samples per second"},
    {fpChannels, u"Channels", pkNumber, "channels of a piece of music"},
}};

constexpr bool InOrderOfProperties() {
  for (size_t i = 0; i < kProperties.size(); ++i)
    if (kProperties[i].fProperty != static_cast<TFileProperty>(i)) return false;
  return true;
}
static_assert(InOrderOfProperties(), "a property's number is its place in the table");

}  // namespace

const TFilePropertyInfo& FilePropertyInfo(TFileProperty pProperty) {
  return kProperties[static_cast<size_t>(pProperty)];
}

}  // namespace Vantrel::Search
