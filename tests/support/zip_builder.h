// Builds zip archives in memory for tests.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace testing_support {

/// A zip archive holding the given (name, content) entries, deflated.
/// Empty on failure.
std::string BuildZip(const std::vector<std::pair<std::string, std::string>>& entries);

/// The smallest OFD package: OFD.xml with a root `ofd:OFD` and one DocBody.
std::string MinimalOfdPackage();

/// Files of a package, by package path (no leading '/').
using ZipEntries = std::vector<std::pair<std::string, std::string>>;

/// An OFD package: OFD.xml with one DocBody (DocRoot `docRoot`, and a
/// Signatures entry when `signatures` is not empty) followed by `files`.
std::string BuildOfdPackage(const ZipEntries& files, const std::string& docRoot = "Doc_0/Document.xml",
                            const std::string& signatures = "");

/// The entries of a zip archive, in archive order; empty when it cannot be
/// read.
ZipEntries ReadZip(const std::string& archive);

/// `entries` with the entry `name` replaced by `content` (added when absent;
/// removed when `content` is null).
ZipEntries WithEntry(ZipEntries entries, const std::string& name, const char* content);

/// A Document.xml: `commonData` and `extra` (e.g. an Annotations element) are
/// inserted as they are; each page is (ID, BaseLoc). The PageArea is
/// 0 0 210 297 unless `commonData` brings its own.
std::string OfdDocumentXml(const std::vector<std::pair<int, std::string>>& pages,
                           const std::string& commonData = "", const std::string& extra = "");

/// A page (or template) file: `body` goes inside one Layer of the Content;
/// `head` (Area, Template, PageRes elements) before the Content.
std::string OfdPageXml(const std::string& body, const std::string& head = "");

/// A Res file with the given BaseLoc (none when empty) and inner elements.
std::string OfdResXml(const std::string& inner, const std::string& baseLoc = "");

}  // namespace testing_support
