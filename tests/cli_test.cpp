// The tarvik program run as a user runs it: exit codes, messages and the
// files written, for each command's success and failure paths.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <pugixml.hpp>
#include <regex>
#include <string>

#include "support/fonts.h"
#include "support/fixtures.h"

namespace fs = std::filesystem;

namespace {

#ifdef TARVIK_CLI
constexpr const char* kCli = TARVIK_CLI;
#else
constexpr const char* kCli = "";
#endif

std::string Slurp(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

struct Outcome {
  int code;
  std::string out, err;
};

class Cli : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!*kCli) GTEST_SKIP() << "the tarvik program is not built";
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    dir_ = fs::temp_directory_path() / ("tarvik_cli_" + std::string(info->name()) + "_" + std::to_string(::getpid()));
    fs::remove_all(dir_);
    fs::create_directories(dir_);
  }
  void TearDown() override {
    if (!dir_.empty()) fs::remove_all(dir_);
  }

  // Runs `tarvik ARGS` in the temporary folder; ARGS is shell text.
  Outcome Tarvik(const std::string& args) {
    const std::string command = "cd '" + dir_.string() + "' && '" + kCli + "' " + args +
                                " >stdout.bin 2>stderr.txt </dev/null";
    const int status = std::system(command.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, Slurp(dir_ / "stdout.bin"), Slurp(dir_ / "stderr.txt")};
  }
  fs::path dir_;
};

std::string Sample(const char* name) { return std::string(TARVIK_SOURCE_DIR) + "/testdata/" + name; }

// A written file's shape: a PNG's size in pixels, {0, pages} of a PDF, an
// SVG's size in its own units, {-1, 0} for a JPEG; {-2, -2} for anything else.
std::pair<int, int> Shape(const std::string& bytes) {
  auto be = [&](size_t at) {
    int v = 0;
    for (size_t i = at; i < at + 4; ++i) v = v << 8 | static_cast<unsigned char>(bytes[i]);
    return v;
  };
  if (bytes.size() >= 24 && bytes.compare(0, 8, "\x89PNG\r\n\x1a\n") == 0) return {be(16), be(20)};
  if (bytes.rfind("\xFF\xD8\xFF", 0) == 0) return {-1, 0};
  if (bytes.rfind("%PDF-1.", 0) == 0 && bytes.find("%%EOF") != std::string::npos) {
    const std::regex page(R"(/Type /Page\b[^s])");
    return {0, static_cast<int>(std::distance(std::sregex_iterator(bytes.begin(), bytes.end(), page), std::sregex_iterator()))};
  }
  pugi::xml_document svg;
  if (!svg.load_string(bytes.c_str()) || std::string(svg.document_element().name()) != "svg") return {-2, -2};
  return {std::atoi(svg.document_element().attribute("width").value()),
          std::atoi(svg.document_element().attribute("height").value())};
}

// Every command's messages and exit codes: 2 for usage errors (standard
// error), 1 for failures (standard error), 0 for success (standard output).
TEST_F(Cli, MessagesAndExitCodes) {
  const std::string doc = "'" + Sample("signed_v4_png.ofd") + "'";
  const std::string folder = "'" + std::string(TARVIK_SOURCE_DIR) + "/testdata'";
  const std::string render = "render " + doc, trust = " --trust '" + Sample("sample_root.pem") + "'";
  const struct { std::string args; int code; const char* message; } cases[] = {
      {render + " --dpi 72.5 -o a.png", 2, "--dpi: '72.5' is not a whole number"},
      {render + " --dpi abc -o a.png", 2, "--dpi: 'abc' is not a number"},
      {render + " --dpi 0 -o a.png", 2, "out of range (1 to 2400)"},
      {render + " --threads 2.5 -o a.png", 2, "--threads: '2.5' is not a whole number"},
      {render + " --text-size 1e2 --text x -o a.png", 2, "--text-size: '1e2'"},
      {render + " --dpix 100 -o a.png", 2, "unknown option '--dpix' (did you mean '--dpi'?)"},
      {render + " -o a.png -o b.png", 2, "--output is given twice ('a.png' and 'b.png')"},
      {render + " --pages 3-1 -o a.png", 2, "'3-1' runs backwards"},
      {render + " --pages 0 -o a.png", 2, "pages count from 1"},
      {render + " -o a.bmp", 2, "cannot tell the format of 'a.bmp'"},
      {render + " -f jpeg -o a.png", 2, "--format JPEG but 'a.png' names PNG"},
      {render + " " + doc + " -o a.png", 2, "several input files need a folder"},
      {render, 2, "no output"},
      {render + " -o", 2, "option '-o' needs a value"},
      {"seal " + doc + " --size 200 -o s.png", 2, "--size: '200' is not a size WxH"},
      {"seal " + doc + " --dpi 300 --size 20x20 -o s.png", 2, "--dpi and --size exclude each other"},
      {"digest " + doc + " --alg sha3", 2, "--alg: 'sha3' is not one of"},
      {"text " + doc, 2, "no text"},
      {"rendr " + doc, 2, "unknown command 'rendr' (did you mean 'render'?)"},
      {"--versoin", 2, "did you mean '--version'?"},
      {"verify", 2, "no input file"},
      {"verify --trusted x", 2, "--trust"},
      {"render " + folder + " -o a.png", 1, "testdata: is a folder"},
      {"seal " + folder + " -o s.png", 1, "testdata: cannot read: it is a directory"},
      {"render missing.ofd -o a.png", 1, "missing.ofd: cannot open (No such file or directory)"},
      {"digest missing.bin", 1, "missing.bin: cannot read (No such file or directory)"},
      {render + " --page 2 -o a.png", 1, "there is no page 2 (the document has 1 page)"},
      {render + " -o no/such/dir/a.png", 1, "no/such/dir/a-1.png: cannot write (No such file or directory)"},
      {"seal '" + std::string(TARVIK_SOURCE_DIR) + "/README.md' -o s.png", 1, "README.md: neither a picture"},
      {"render --help", 0, "--pages LIST"},
      {"seal --help", 0, "usage: tarvik seal"},
      {"digest --help", 0, "exit status"},
      {"--version", 0, "libjpeg-turbo"},
      {"info " + doc, 0, "seal v4"},
      {"digest '" + Sample("sample_seal.png") + "' --alg sha256", 0, "\n"},
      {"verify " + doc, 0, "): intact"},
      {"verify '" + Sample("signed_v1_png.ofd") + "'" + trust, 0, "): valid"},
      {"verify " + doc + " --json" + trust, 0, "\"verdict\": \"valid\""},
  };
  for (const auto& c : cases) {
    const Outcome r = Tarvik(c.args);
    EXPECT_EQ(r.code, c.code) << c.args << "\n" << r.err;
    EXPECT_NE((c.code ? r.err : r.out).find(c.message), std::string::npos) << c.args << "\n" << r.out << r.err;
    EXPECT_TRUE(c.code != 2 || r.out.empty()) << c.args;
  }
  EXPECT_FALSE(fs::exists(dir_ / "a.png"));
  // An altered copy of the signed sample: one signed file changed.
  const std::string copy = "cp " + doc + " '" + dir_.string() + "/altered.ofd' && cd '" + dir_.string() +
                           "' && mkdir -p Doc_0 && echo ' ' > Doc_0/PublicRes.xml && zip -q altered.ofd Doc_0/PublicRes.xml";
  if (std::system(copy.c_str()) == 0) {
    const Outcome r = Tarvik("verify altered.ofd");
    EXPECT_EQ(r.code, 1);
    EXPECT_NE(r.out.find("changed: /Doc_0/PublicRes.xml"), std::string::npos) << r.out;
  }
}

// What each render or seal writes, and where: see Shape.
TEST_F(Cli, WritesEachFormatUnderTheExpectedNames) {
  TARVIK_NEED_FONTS("AR PL UMing CN");  // the page's text, embedded in the PDF
  const std::string doc = "'" + Sample("signed_v4_png.ofd") + "' -q ";
  const std::string three = "'" + Sample("signed_v4_png.ofd") + "' '" + Sample("signed_v1_png.ofd") + "' '" +
                            Sample("signed_v4_ofdseal.ofd") + "' --dpi 50 -q ";
  const fs::path esl = fs::path(TARVIK_FIXTURE_DIR) / "ofdrw__UserV4.esl";
  const struct { std::string args; const char* file; std::pair<int, int> shape; } cases[] = {
      {"render " + doc + "-o page.png", "page-1.png", {1240, 1753}},
      {"render " + doc + "--page 1 --dpi 60 -o one.png", "one.png", {496, 701}},
      {"render " + doc + "-o bare", "bare-1.png", {1240, 1753}},
      {"render " + doc + "--pages 1 -o page.jpg --quality 50", "page.jpg", {-1, 0}},
      {"render " + doc + "--page 1 --dpi 30 -o -", "-", {248, 350}},
      {"render " + doc + "-f pdf -o -", "-", {0, 1}},
      {"render " + doc + "-o doc.pdf", "doc.pdf", {0, 1}},
      {"render " + doc + "--format svg -o page", "page-1.svg", {210, 297}},
      {"render " + three + "--threads 3 -o three/", "three/signed_v4_ofdseal-1.png", {413, 584}},
      {"render " + three + "-o pdfs/ -f pdf", "pdfs/signed_v1_png.pdf", {0, 1}},
      {"seal '" + Sample("sample_seal.ofd") + "' --size 200x200 -o s.png", "s.png", {200, 200}},
      {"seal '" + Sample("sample_seal.png") + "' --gray --text-size 20 --text x -o s.pdf", "s.pdf", {0, 1}},
      {"seal '" + Sample("sample_seal.png") + "' -o s.svg -q", "s.svg", {20, 20}},
      {"seal '" + esl.string() + "' -o -", fs::exists(esl) ? "-" : nullptr, {400, 400}},
  };
  for (const auto& c : cases) {
    if (!c.file) continue;
    const Outcome r = Tarvik(c.args);
    ASSERT_EQ(r.code, 0) << c.args << "\n" << r.err;
    const auto shape = Shape(*c.file == '-' ? r.out : Slurp(dir_ / c.file));
    EXPECT_EQ(shape, c.shape) << c.args;
    EXPECT_TRUE(c.args.find(" -q") == std::string::npos || *c.file == '-' || r.out.empty()) << c.args;  // quiet
  }
  EXPECT_FALSE(fs::exists(dir_ / "-"));
  const std::string pdf = Slurp(dir_ / "doc.pdf");
  EXPECT_NE(pdf.find("/FontFile"), std::string::npos) << "text embedded as a font";
  EXPECT_NE(pdf.find("/Subtype /Image"), std::string::npos) << "the seal as an image";
  EXPECT_LT(pdf.size(), Slurp(dir_ / "page-1.png").size());
  std::smatch box;
  ASSERT_TRUE(std::regex_search(pdf, box, std::regex(R"(/MediaBox \[ *0 0 ([0-9.]+) ([0-9.]+) *\])")));
  EXPECT_NEAR(std::stod(box[1]), 210 / 25.4 * 72, 0.01);
  EXPECT_NEAR(std::stod(box[2]), 297 / 25.4 * 72, 0.01);
}

// Pages of one document on two threads.
}  // namespace
