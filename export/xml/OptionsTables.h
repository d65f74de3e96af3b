#pragma once

// The tables of an options file: file-type groups, colours of keys, and searches. See `docs/options-file.md`.

#include <set>
#include <string>
#include <string_view>

#include "export/xml/XMLFileStream.h"
#include "export/xml/XMLUtils.h"
#include "model/options/GlobalOptions.h"

namespace Vantrel::Options {

// Messages show only the beginning of a text. A damaged or hostile file may hold texts of any length.
std::string Shown(std::u16string_view pText);

// Reads the list of file-type groups, item by item. It is taken whole or not at all: without one of its groups, that
// group's files would count in another one.
class TGroupsReader {
 public:
  // Begins a list.
  TGroupsReader() : fGroups(MakeRef<TFileTypeGroups>()) {}
  // Takes the attributes of the next group. Returns what is wrong, or an empty text.
  std::string Add(XML::TXMLAttributeSpan pAttributes);
  // Ends the list and puts it into the options, unless a group was wrong. Returns what is wrong with the whole list.
  std::string Finish(TGlobalOptions& pOptions);

 private:
  std::string Refuse(std::string_view pWhy);

  TRef<TFileTypeGroups> fGroups;
  std::set<std::u16string> fCaptions;  // folded
  std::u16string fCatchAll;            // the caption of a group that takes all, which must be the last one
  bool fIsRefused = false;
};

// Takes one colour of the table over into the options. Returns what is wrong, or an empty text.
std::string ReadColor(XML::TXMLAttributeSpan pAttributes, TGlobalOptions& pOptions);

// Takes one search that the user keeps over into the options. Returns what is wrong, or an empty text.
std::string ReadSearch(XML::TXMLAttributeSpan pAttributes, TGlobalOptions& pOptions);

// Writes the tables that differ from those that the program starts with.
void WriteTables(XML::TXMLFileStream& pStream, const TGlobalOptions& pOptions);

}  // namespace Vantrel::Options
