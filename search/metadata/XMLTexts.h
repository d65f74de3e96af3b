#pragma once

// Reads the texts of a small XML document: properties of office documents, and those that programs put into pictures.

#include <functional>
#include <string>
#include <string_view>

namespace Vantrel::Search {

// A text of a document. Names are without their prefix. Valid during the call.
struct TXMLText {
  std::string_view fElement;    // that holds the text; "li" for the items of a list
  std::string_view fHolder;     // the nearest element around it that is no list and no item of one
  std::string_view fAttribute;  // whose value the text is; empty for the text of an element
  std::string_view fText;       // UTF-8
};

// Calls pText for each text and each attribute. A document with a type declaration, or nested deeper than any of these
// documents, is read up to there. So is a damaged one.
void ReadXMLTexts(std::string_view pDocument, const std::function<void(const TXMLText&)>& pText);

}  // namespace Vantrel::Search
