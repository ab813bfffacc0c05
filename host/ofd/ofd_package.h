// OFD packages: zip archives whose OFD.xml lists the documents.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "host/base/byte_string.h"
#include "host/base/host_export.h"
#include "host/base/stream_reader.h"

namespace host {

class OfdDocument;
class ZipArchive;

/// Results of the package and document loaders: 0 is success.
enum OfdLoadResult : int {
  kOfdLoadSuccess = 0,
  kOfdLoadBadArgument = 1,  // null reader, entry or package
  kOfdLoadNotZip = 2,       // not a readable zip archive
  kOfdLoadMissingFile = 3,  // OFD.xml or Document.xml absent or unreadable
  kOfdLoadBadXml = 4,       // malformed XML or the wrong root element
  kOfdLoadNoMemory = 5,
};

/// Why a package or document did not load: the OfdLoadResult code, the
/// package entry concerned ("OFD.xml", "Doc_0/Document.xml"; empty for the
/// archive itself), the byte offset in that entry where known (-1 otherwise)
/// and the reason in words.
struct HOST_API OfdLoadError {
  int code = kOfdLoadSuccess;
  std::string entry;
  int64_t offset = -1;
  std::string description;
};

/// One DocBody of OFD.xml. Locations are absolute package locations with a
/// leading '/' ("/Doc_0/Document.xml"); empty when the entry has none.
struct HOST_API OfdDocBody {
  int index = 0;          // position among the package's documents
  ByteString docId;       // DocInfo/DocID
  ByteString docRoot;     // the document's Document.xml
  ByteString signatures;  // the document's Signatures.xml
};

/// An open OFD package. Reads are serialised by a lock, so the documents and
/// pages of one package may load files from several threads.
class HOST_API OfdPackage {
 public:
  OfdPackage();
  virtual ~OfdPackage();
  OfdPackage(const OfdPackage&) = delete;
  OfdPackage& operator=(const OfdPackage&) = delete;

  /// 1 when the stream holds a zip archive whose OFD.xml has the root element
  /// `OFD` (with or without the `ofd:` prefix), else 0. Reads from offset 0
  /// and leaves the position at 0. Thread-safe; never prints.
  static int CheckFileType(StreamReader* reader);

  /// Opens the package in `reader` and reads OFD.xml. Returns 0 on success
  /// (also when OFD.xml lists no document), else an OfdLoadResult code. With
  /// `flag` 1 the package takes over the reader whatever the outcome and
  /// releases it when closed or destroyed; otherwise the caller keeps it and
  /// it must outlive the package. A package already open is closed first.
  int LoadFromStream(StreamReader* reader, int flag);
  /// Why the last LoadFromStream failed (code 0 after a success).
  const OfdLoadError& GetLoadError() const { return loadError_; }
  /// Number of DocBody entries; 0 before loading and after closing.
  int CountDocuments() const;
  /// The entry of the document at `index` (owned by the package, valid until
  /// it is closed), or null when out of range.
  const OfdDocBody* GetDocument(int index) const;

  /// Count of the holders of this package (documents handed out by loaders
  /// that share it). Kept by the callers; the package only stores it.
  int DocumentReferenceCount = 0;

  /// Opens a file of the package as a new memory stream reader holding all of
  /// its bytes (GetBuffer is never null); the caller releases it. A location
  /// starting with '/' is taken from the package root, any other from the
  /// folder of `document`'s Document.xml (the root when `document` is null).
  /// "./" and "../" steps are resolved; when no entry has the exact name, the
  /// first one whose name differs only in ASCII case is used. `flag` is
  /// reserved (callers pass 1). Null when absent, too large or unreadable.
  StreamReader* LoadRawStream(const OfdDocument* document, const ByteString& location, int flag);
  /// As LoadRawStream, into `out`; false (out empty) on failure.
  bool LoadRawData(const OfdDocument* document, std::string_view location, std::string& out);
  /// Reads the entry at a package path (as NormalizeLocation gives it), with
  /// the same case fallback; false when absent or unreadable.
  bool ReadEntry(std::string_view path, std::string& out);
  /// The real name of the entry that ReadEntry would read, or "".
  std::string FindEntry(std::string_view path) const;

  /// Closes the archive, drops the document entries and releases a reader
  /// the package took over. Loaded documents must not read files afterwards
  /// (their reads then fail). Safe to call more than once.
  void ClosePackage();

 private:
  int Load(StreamReader* reader, int flag);

  std::unique_ptr<ZipArchive> archive_;
  StreamReader* reader_ = nullptr;
  bool ownsReader_ = false;
  std::vector<OfdDocBody> documents_;
  OfdLoadError loadError_;
  mutable std::mutex mutex_;
};

}  // namespace host
