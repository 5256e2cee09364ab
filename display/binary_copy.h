// The private clipboard payload that carries an array between displays and desktops of the
// program (MIME type application/x-quelmor-binary-copy): a fixed header (tag, element type,
// six resolutions, six spacings, the name) and the samples as stored.
//
//   std::string bytes = BinaryCopy(a);
//   CZrkData* b = BinaryPaste(bytes, space);   // null for a malformed payload
#pragma once

#include <string>

class CDataSpace;
class CZrkData;

constexpr const char* kBinaryCopyMime = "application/x-quelmor-binary-copy";

// The payload of `a`; empty without samples.
std::string BinaryCopy(const CZrkData* a);
// A new array of `space` from a payload, under its own name made unique; null (and nothing
// made) when the payload is short, of an unknown type, or its sizes disagree with its length.
CZrkData* BinaryPaste(const std::string& bytes, CDataSpace& space);
