#pragma once

// The three ways in which pictures hold properties: Exif, XMP and IPTC.

#include <string_view>

#include "search/metadata/FileProperties.h"

namespace Vantrel::Search {

// A block that begins like a TIFF file, without "Exif" in front.
void ReadExif(std::string_view pBlock, TFileProperties& pProperties);
// An XML document, as PDF files have it too.
void ReadXmp(std::string_view pDocument, TFileProperties& pProperties);
// The resources of a JPEG file that Photoshop defined; IPTC is one of them.
void ReadImageResources(std::string_view pResources, TFileProperties& pProperties);

// Whole numbers in files. 0 where the bytes end before.
uint32_t BigEndianAt(std::string_view pBytes, size_t pPlace, size_t pLength);
uint32_t LittleEndianAt(std::string_view pBytes, size_t pPlace, size_t pLength);

}  // namespace Vantrel::Search
