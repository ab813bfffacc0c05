// tarvik render: draw the pages of OFD documents, seals included, as PNG,
// JPEG, PDF or SVG; several files and pages at once on several threads.
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "command.h"
#include "console.h"
#include "host/base/codec.h"
#include "host/base/units.h"
#include "host/base/vector_device.h"
#include "host/ofd/ofd_document.h"
#include "host/ofd/ofd_page.h"
#include "options.h"
#include "output.h"
#include "page_range.h"
#include "tarvik/viewer.h"
#include "text_options.h"
#include "thread_pool.h"

namespace tools {

namespace {

namespace fs = std::filesystem;
namespace viewer = tarvik::viewer;

enum Id : int {
  kOutput = 1,
  kFormat,
  kDpi,
  kQuality,
  kPage,
  kPages,
  kNoSeals,
  kCross,
  kGray,
  kGrey,
  kBlack,
  kRenderMode,
  kNoVerify,
  kTrust,
  kThreads,
  kQuiet,
};

constexpr int kRasterDpi = 150;
constexpr int kVectorDpi = 300;

const char* const kHelp =
    "usage: tarvik render FILE.ofd... -o OUT [options]\n"
    "\n"
    "Draws the pages of OFD documents with the seals of their signatures.\n"
    "\n"
    "output:\n"
    "  -o, --output OUT     OUT.png, OUT.jpg, OUT.pdf or OUT.svg; '-' for standard\n"
    "                       output (one page, or a PDF); DIR/ for a folder\n"
    "  -f, --format FMT     png, jpeg, pdf or svg (default: from OUT's extension,\n"
    "                       else png)\n"
    "      --dpi N          PNG and JPEG: resolution, 1 to 2400 (default 150);\n"
    "                       PDF and SVG: resolution of what is drawn as a picture\n"
    "                       on the way, such as seals made of OFD pages (default 300)\n"
    "      --quality N      JPEG quality, 1 to 100 (default 90)\n"
    "pages:\n"
    "      --page N         one page, counted from 1\n"
    "      --pages LIST     pages such as 1-3,5 or 4- (default: all)\n"
    "seals:\n"
    "      --no-seals       draw the pages without seals\n"
    "      --cross          a cross over every seal\n"
    "      --gray, --black  seals in grey or black\n"
    "      --render-mode N  0: seal pictures cached per document (default); 1: decoded\n"
    "                       each time\n"
    "      --no-verify      do not verify the signatures while opening\n"
    "      --trust PATH     trust anchors for verification: a PEM file or a folder\n"
    "running:\n"
    "  -j, --threads N      threads for pages and files (default: the number of cores)\n"
    "  -q, --quiet          no progress line\n"
    "  -h, --help           this text\n"
    "\n"
    "Output names: with one page asked for (--page N, or --pages N), OUT itself;\n"
    "otherwise OUT-1.png, OUT-2.png, ... for each page (PNG, JPEG, SVG), and one\n"
    "OUT.pdf for the whole document. With -o DIR/ each input FILE.ofd gives\n"
    "DIR/FILE-1.png, ... or DIR/FILE.pdf; several inputs need -o DIR/. A name\n"
    "without an extension gets the format's. A page of A4 at 150 dpi is\n"
    "1240 x 1753 pixels; PDF and SVG keep the page size in millimetres.\n"
    "\n";

const char* const kExitHelp =
    "\nexit status: 0 all written, 1 a file could not be read, rendered or written\n"
    "(the others are still written), 2 a usage error (nothing is done)\n";

struct Settings {
  std::vector<std::string> inputs;
  std::string output;
  Format format = Format::kPng;
  int dpi = 0;  // 0: the format's default
  int quality = 90;
  int threads = DefaultThreads();
  PageRange pages;
  bool quiet = false;
  bool toDirectory = false;
  bool toStdout = false;
  viewer::RenderOptions render;
  viewer::OpenOptions open;
  TextOptions text;
};

// One file to write: a page of a document, or every selected page (PDF).
struct Job {
  size_t document;
  std::vector<int> pages;
  std::string path;
};

std::vector<OptionSpec> Specs() {
  std::vector<OptionSpec> specs = {
      {"output", 'o', true, kOutput},   {"format", 'f', true, kFormat},
      {"dpi", 0, true, kDpi},           {"quality", 0, true, kQuality},
      {"page", 0, true, kPage},         {"pages", 0, true, kPages},
      {"no-seals", 0, false, kNoSeals}, {"cross", 0, false, kCross},
      {"gray", 0, false, kGray},        {"grey", 0, false, kGrey},
      {"black", 0, false, kBlack},      {"render-mode", 0, true, kRenderMode},
      {"no-verify", 0, false, kNoVerify}, {"trust", 0, true, kTrust},
      {"threads", 'j', true, kThreads}, {"quiet", 'q', false, kQuiet},
  };
  for (const OptionSpec& s : TextOptionSpecs()) specs.push_back(s);
  return specs;
}

// Reads the options into `s`; kExitOk, or the exit code after a message.
int ReadSettings(const std::vector<std::string>& args, Settings& s, bool& help) {
  ParsedArgs parsed;
  static const std::vector<OptionSpec> kSpecs = Specs();
  if (!ParseArgs("render", args, kSpecs, parsed)) return kExitUsage;
  help = parsed.help;
  if (help) return kExitOk;
  bool haveFormat = false, havePage = false;
  for (const GivenOption& o : parsed.options) {
    std::string why;
    long n = 0;
    switch (o.spec->id) {
      case kOutput:
        s.output = o.value;
        break;
      case kFormat:
        if (!FormatFromName(o.value, s.format)) {
          return BadValue("render", o, "'" + o.value + "' is not one of png, jpeg, pdf, svg");
        }
        haveFormat = true;
        break;
      case kDpi:
        if (!ParseInteger(o.value, 1, 2400, n, why)) return BadValue("render", o, why);
        s.dpi = static_cast<int>(n);
        break;
      case kQuality:
        if (!ParseInteger(o.value, 1, 100, n, why)) return BadValue("render", o, why);
        s.quality = static_cast<int>(n);
        break;
      case kThreads:
        if (!ParseInteger(o.value, 1, 256, n, why)) return BadValue("render", o, why);
        s.threads = static_cast<int>(n);
        break;
      case kRenderMode:
        if (!ParseInteger(o.value, 0, 1, n, why)) return BadValue("render", o, why);
        s.render.renderMode = static_cast<int>(n);
        break;
      case kPage:
      case kPages:
        if (havePage) return UsageError("render", "give --page or --pages once");
        havePage = true;
        if (o.spec->id == kPage && !ParseInteger(o.value, 1, 1000000, n, why)) {
          return BadValue("render", o, why + " (for several pages: --pages 1-3,5)");
        }
        if (!s.pages.Parse(o.value, why)) return BadValue("render", o, why);
        break;
      case kNoSeals:
        s.render.seals = false;
        break;
      case kCross:
        s.render.cross = true;
        break;
      case kGray:
      case kGrey:
        s.render.colorMode = 1;
        break;
      case kBlack:
        s.render.colorMode = 2;
        break;
      case kNoVerify:
        s.open.verify = false;
        break;
      case kTrust:
        s.open.trustAnchors = o.value;
        break;
      case kQuiet:
        s.quiet = true;
        break;
      default:
        if (ApplyTextOption(o, s.text, why) == OptionResult::kBad) return BadValue("render", o, why);
        break;
    }
  }
  s.inputs = parsed.operands;
  if (s.inputs.empty()) return UsageError("render", "no input file");
  if (s.output.empty()) return UsageError("render", "no output: give -o OUT.png, -o OUT.pdf, -o - or -o DIR/");
  if (s.text.haveText) s.render.sealText = &s.text.param;
  if (!s.open.trustAnchors.empty()) {
    std::error_code ec;
    if (!fs::exists(s.open.trustAnchors, ec)) {
      std::fprintf(stderr, "tarvik render: --trust %s: %s\n", s.open.trustAnchors.c_str(),
                   std::strerror(ENOENT));
      return kExitFailure;
    }
  }

  std::error_code ec;
  s.toStdout = s.output == "-";
  s.toDirectory = !s.toStdout && (s.output.back() == '/' || fs::is_directory(s.output, ec));
  if (!haveFormat && !s.toStdout && !s.toDirectory && HasExtension(s.output) &&
      !FormatFromPath(s.output, s.format)) {
    return UsageError("render", "cannot tell the format of '" + s.output +
                                    "' from its extension (.png, .jpg, .pdf, .svg): give --format");
  }
  Format named = s.format;
  if (haveFormat && !s.toStdout && !s.toDirectory && FormatFromPath(s.output, named) &&
      named != s.format) {
    return UsageError("render", std::string("--format ") + FormatName(s.format) + " but '" +
                                    s.output + "' names " + FormatName(named));
  }
  if (s.inputs.size() > 1 && !s.toDirectory) {
    return UsageError("render", "several input files need a folder: -o DIR/");
  }
  if (s.toStdout && isatty(STDOUT_FILENO)) {
    return UsageError("render", std::string("standard output is a terminal: not writing ") +
                                    FormatName(s.format) + " there");
  }
  if (s.dpi == 0) s.dpi = s.format == Format::kPdf || s.format == Format::kSvg ? kVectorDpi : kRasterDpi;
  s.render.dpi = s.dpi;
  return kExitOk;
}

// The files to write for document `d` (pages already resolved).
void AddJobs(const Settings& s, size_t d, const std::vector<int>& pages, std::vector<Job>& jobs) {
  std::string base = s.output;
  if (s.toDirectory) {
    if (base.back() != '/') base += '/';
    base += Stem(s.inputs[d]) + Extension(s.format);
  } else if (!s.toStdout && !HasExtension(base)) {
    base += Extension(s.format);
  }
  if (s.format == Format::kPdf) {
    jobs.push_back({d, pages, base});
    return;
  }
  const bool single = s.toStdout || (!s.toDirectory && s.pages.IsSinglePage());
  for (int page : pages) jobs.push_back({d, {page}, single ? base : NumberedName(base, page + 1, s.format)});
}

void Report(Console& console, const viewer::Document& doc, int index,
            const viewer::RenderReport& report) {
  for (const viewer::SealResult& seal : report.seals) {
    if (!seal.drawn) {
      console.Message("tarvik render: " + doc.Name() + ": page " + std::to_string(index + 1) +
                      ": the seal of StampAnnot " + seal.stampId + " cannot be shown: " + seal.reason);
    }
  }
  for (const std::string& warning : report.warnings) {
    console.Message("tarvik render: " + doc.Name() + ": page " + std::to_string(index + 1) + ": " + warning);
  }
}

// Page millimetres to the vector device's units, the page area's corner at
// the origin.
bool PageMatrix(const viewer::Document& doc, int index, double unitsPerInch, host::Matrix& out,
                viewer::PageSize& size, std::string& why) {
  viewer::Error error;
  if (!doc.GetPageSize(index, size, &error)) {
    why = error.message;
    return false;
  }
  const std::unique_ptr<host::OfdPage> page(doc.HostDocument().LoadPage(index, 1));
  const host::GRect area = page ? page->GetPageArea() : host::GRect(0, 0, 0, 0);
  const float scale = static_cast<float>(unitsPerInch / host::kMmPerInch);
  out = host::Matrix(scale, 0, 0, scale, -area.left * scale, -area.top * scale);
  return true;
}

// Draws the job's page of `doc` into an SVG file; false with a message.
bool RenderSvg(const Settings& s, const viewer::Document& doc, const Job& job, Console& console) {
  const int index = job.pages[0];
  host::Matrix matrix;
  viewer::PageSize size;
  std::string why;
  OutputFile file;
  if (!PageMatrix(doc, index, s.dpi, matrix, size, why) || !file.Open(job.path, why)) {
    console.Message("tarvik render: " + why);
    console.PageDone();
    return false;
  }
  std::unique_ptr<host::VectorDevice> device = host::VectorDevice::Create(
      host::VectorFormat::kSvg,
      [&file](const unsigned char* data, size_t n) { return file.Write(data, n); }, size.width,
      size.height, s.dpi);
  bool ok = device != nullptr;
  if (ok) {
    viewer::RenderReport report;
    ok = doc.RenderPage(index, *device, matrix, s.render, &report);
    Report(console, doc, index, report);
    if (!ok) console.Message("tarvik render: " + report.error.message);
  }
  console.PageDone();
  const bool finished = device && device->Finish();
  device.reset();
  if (!file.Close(why)) {
    console.Message("tarvik render: " + why);
    return false;
  }
  if (ok && !finished) console.Message("tarvik render: " + job.path + ": cannot write the picture");
  return ok && finished;
}

// One page of a PDF, drawn ahead (on any thread) into a recording.
struct RecordedPage {
  std::unique_ptr<host::VectorDevice> recording;
  viewer::PageSize size;
};

bool RecordPage(const Settings& s, const viewer::Document& doc, int index, RecordedPage& out,
                Console& console) {
  host::Matrix matrix;
  std::string why;
  bool ok = PageMatrix(doc, index, s.dpi, matrix, out.size, why);
  if (ok) {
    out.recording = host::VectorDevice::Create(host::VectorFormat::kRecording, nullptr,
                                               out.size.width, out.size.height, s.dpi);
    if (!out.recording) why = doc.Name() + ": page " + std::to_string(index + 1) + ": cannot make a page of that size";
    ok = out.recording != nullptr;
  }
  if (ok) {
    viewer::RenderReport report;
    ok = doc.RenderPage(index, *out.recording, matrix, s.render, &report);
    Report(console, doc, index, report);
    if (!ok) why = report.error.message;
  }
  if (!ok) {
    console.Message("tarvik render: " + why);
    out.recording.reset();
  }
  console.PageDone();
  return ok;
}

// One PDF being written: pages are played into it in order as their
// recordings arrive, and the file is removed when a page fails.
class PdfOutput {
 public:
  PdfOutput(const Job& job, int dpi) : job_(job), dpi_(dpi) {}

  // Plays the next page (null when it could not be drawn; already reported).
  void Add(const RecordedPage& page, Console& console) {
    if (!ok_) return;
    std::string why;
    if (!page.recording) {
      ok_ = false;
    } else if (!pdf_) {
      if (!file_.Open(job_.path, why)) {
        console.Message("tarvik render: " + why);
        ok_ = false;
        return;
      }
      pdf_ = host::VectorDevice::Create(
          host::VectorFormat::kPdf,
          [this](const unsigned char* data, size_t n) { return file_.Write(data, n); },
          page.size.width, page.size.height, dpi_);
      ok_ = pdf_ && pdf_->Play(*page.recording);
    } else {
      ok_ = pdf_->NextPage(page.size.width, page.size.height) && pdf_->Play(*page.recording);
    }
  }

  // Ends the document; false with a message when it could not be written.
  bool Finish(Console& console) {
    const bool finished = pdf_ && pdf_->Finish();
    pdf_.reset();
    std::string why;
    const bool closed = file_.Close(why);
    if (!closed) console.Message("tarvik render: " + why);
    const bool written = ok_ && finished && closed;
    if (ok_ && closed && !finished) {
      console.Message("tarvik render: " + job_.path + ": cannot write the document");
    }
    if (!written && job_.path != "-") {
      std::error_code ec;
      std::filesystem::remove(job_.path, ec);
    }
    return written;
  }

 private:
  const Job& job_;
  const int dpi_;
  OutputFile file_;
  std::unique_ptr<host::VectorDevice> pdf_;
  bool ok_ = true;
};

bool RenderRaster(const Settings& s, const viewer::Document& doc, const Job& job, Console& console) {
  const int index = job.pages[0];
  viewer::RenderReport report;
  const std::unique_ptr<host::Dib> dib = doc.RenderPage(index, s.render, &report);
  Report(console, doc, index, report);
  console.PageDone();
  if (!dib) {
    console.Message("tarvik render: " + report.error.message);
    return false;
  }
  std::string bytes;
  const bool encoded =
      s.format == Format::kJpeg ? host::EncodeJpeg(*dib, s.quality, bytes) : host::EncodePng(*dib, bytes);
  std::string why;
  if (!encoded) {
    console.Message("tarvik render: " + job.path + ": cannot encode the page as " + FormatName(s.format));
    return false;
  }
  if (!WriteWholeFile(job.path, bytes, why)) {
    console.Message("tarvik render: " + why);
    return false;
  }
  return true;
}

}  // namespace

int RunRender(const std::vector<std::string>& args) {
  Settings s;
  bool help = false;
  const int code = ReadSettings(args, s, help);
  if (help) {
    std::fputs(kHelp, stdout);
    std::fputs(kTextOptionsUsage, stdout);
    std::fputs(kExitHelp, stdout);
    return kExitOk;
  }
  if (code != kExitOk) return code;

  if (s.toDirectory) {
    std::error_code ec;
    fs::create_directories(s.output, ec);
    if (ec) {
      std::fprintf(stderr, "tarvik render: %s: cannot make the folder (%s)\n", s.output.c_str(),
                   ec.message().c_str());
      return kExitFailure;
    }
  }

  // Open every document (in parallel), then list the files to write.
  std::vector<std::unique_ptr<viewer::Document>> docs(s.inputs.size());
  std::vector<std::string> openErrors(s.inputs.size());
  RunParallel(static_cast<int>(s.inputs.size()), s.threads, [&](int i) {
    std::error_code ec;
    if (fs::is_directory(s.inputs[i], ec)) {
      openErrors[i] = s.inputs[i] + ": is a folder, not an OFD file";
      return;
    }
    viewer::Error error;
    docs[i] = viewer::Document::Open(s.inputs[i], &error, s.open);
    if (!docs[i]) openErrors[i] = error.message;
  });
  int failures = 0;
  std::vector<Job> jobs;
  for (size_t d = 0; d < docs.size(); ++d) {
    if (!docs[d]) {
      std::fprintf(stderr, "tarvik render: %s\n", openErrors[d].c_str());
      ++failures;
      continue;
    }
    std::vector<int> pages;
    std::string why;
    if (!s.pages.Resolve(docs[d]->PageCount(), pages, why)) {
      std::fprintf(stderr, "tarvik render: %s: %s\n", s.inputs[d].c_str(), why.c_str());
      ++failures;
      continue;
    }
    AddJobs(s, d, pages, jobs);
  }
  if (s.toStdout && jobs.size() > 1) {
    return UsageError("render", std::to_string(jobs.size()) +
                                    " pages cannot all go to standard output: choose one with "
                                    "--page N, or write a PDF");
  }
  std::set<std::string> names;
  for (const Job& job : jobs) {
    if (!names.insert(job.path).second) {
      return UsageError("render", "two outputs would both be named " + job.path +
                                      " (inputs with the same name?)");
    }
  }

  int total = 0;
  for (const Job& job : jobs) total += static_cast<int>(job.pages.size());
  Console console(!s.quiet && isatty(STDERR_FILENO), total);
  std::vector<char> ok(jobs.size(), 0);
  if (s.format == Format::kPdf) {
    // Pages are drawn into recordings on any thread, a window of them at a
    // time (memory stays bounded), then played into their PDFs in order.
    std::vector<std::pair<size_t, size_t>> tasks;  // (job, page of the job)
    std::vector<std::unique_ptr<PdfOutput>> outputs;
    for (size_t j = 0; j < jobs.size(); ++j) {
      outputs.push_back(std::make_unique<PdfOutput>(jobs[j], s.dpi));
      for (size_t k = 0; k < jobs[j].pages.size(); ++k) tasks.emplace_back(j, k);
    }
    const size_t window = static_cast<size_t>(std::max(8, 4 * s.threads));
    std::vector<RecordedPage> recorded(window);
    for (size_t start = 0; start < tasks.size(); start += window) {
      const size_t count = std::min(window, tasks.size() - start);
      RunParallel(static_cast<int>(count), s.threads, [&](int t) {
        const auto [j, k] = tasks[start + static_cast<size_t>(t)];
        RecordPage(s, *docs[jobs[j].document], jobs[j].pages[k], recorded[static_cast<size_t>(t)],
                   console);
      });
      for (size_t t = 0; t < count; ++t) {
        const auto [j, k] = tasks[start + t];
        outputs[j]->Add(recorded[t], console);
        recorded[t] = RecordedPage();
        if (k + 1 == jobs[j].pages.size()) ok[j] = outputs[j]->Finish(console);
      }
    }
  } else {
    RunParallel(static_cast<int>(jobs.size()), s.threads, [&](int i) {
      const Job& job = jobs[i];
      const viewer::Document& doc = *docs[job.document];
      ok[i] = s.format == Format::kSvg ? RenderSvg(s, doc, job, console)
                                       : RenderRaster(s, doc, job, console);
    });
  }
  console.Finish();
  for (char k : ok) failures += k ? 0 : 1;
  return failures ? kExitFailure : kExitOk;
}

}  // namespace tools
