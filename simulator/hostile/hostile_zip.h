#pragma once
// Zip archives a hostile device serves as its description: one whose
// directory points outside the archive, and one that inflates far beyond
// any real description.

#include <string>

namespace quorvex::sim {

// A zip of memberName holding content, whose end record places the central
// directory (and whose directory places the member) outside the archive.
std::string malformedZip(const std::string& memberName, const std::string& content);

// A well-formed zip of memberName whose member inflates to 1 GiB of zeros
// from about 1 MiB.
std::string zipBomb(const std::string& memberName);

} // namespace quorvex::sim
