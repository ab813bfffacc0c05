// The tarvik program run as a user runs it: exit codes, messages and the
// files written, for each command's success and failure paths.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <pugixml.hpp>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "support/fixtures.h"
#include "support/fonts.h"

namespace fs = std::filesystem;

namespace {

#ifdef TARVIK_CLI
constexpr const char* kCli = TARVIK_CLI;
#else
constexpr const char* kCli = "";
#endif

std::string Slurp(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream out;
  out << in.rdbuf();
  return out.str();
}

struct Outcome {
  int code = -1;
  std::string out;
  std::string err;
};

class Cli : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!*kCli) GTEST_SKIP() << "the tarvik program is not built";
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    dir_ = fs::temp_directory_path() / ("tarvik_cli_" + std::string(info->name()) + "_" +
                                        std::to_string(::getpid()));
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
    Outcome r;
    const int status = std::system(command.c_str());
    r.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    r.out = Slurp(dir_ / "stdout.bin");
    r.err = Slurp(dir_ / "stderr.txt");
    return r;
  }
  fs::path dir_;
};

std::string Sample(const char* name) { return std::string(TARVIK_SOURCE_DIR) + "/testdata/" + name; }

// Width and height from a PNG's header; {0, 0} when it is not a PNG.
std::pair<int, int> PngSize(const std::string& bytes) {
  if (bytes.size() < 24 || bytes.compare(0, 8, "\x89PNG\r\n\x1a\n") != 0) return {0, 0};
  auto be = [&](size_t at) {
    return static_cast<int>(static_cast<unsigned char>(bytes[at]) << 24 |
                            static_cast<unsigned char>(bytes[at + 1]) << 16 |
                            static_cast<unsigned char>(bytes[at + 2]) << 8 |
                            static_cast<unsigned char>(bytes[at + 3]));
  };
  return {be(16), be(20)};
}

// Pages of a PDF (page objects) and the first MediaBox, read from cairo's
// uncompressed object dictionaries.
struct PdfFacts {
  bool header = false;
  int pages = 0;
  double width = 0, height = 0;
};
PdfFacts ReadPdf(const std::string& bytes) {
  PdfFacts f;
  f.header = bytes.rfind("%PDF-1.", 0) == 0 && bytes.find("%%EOF") != std::string::npos;
  const std::regex page(R"(/Type /Page\b[^s])");
  f.pages = static_cast<int>(std::distance(std::sregex_iterator(bytes.begin(), bytes.end(), page),
                                           std::sregex_iterator()));
  std::smatch box;
  if (std::regex_search(bytes, box, std::regex(R"(/MediaBox \[ *0 0 ([0-9.]+) ([0-9.]+) *\])"))) {
    f.width = std::stod(box[1]);
    f.height = std::stod(box[2]);
  }
  return f;
}

TEST_F(Cli, UsageErrorsNameTheOptionAndTheCause) {
  const std::string doc = "'" + Sample("signed_v4_png.ofd") + "'";
  const struct {
    std::string args;
    const char* message;
  } cases[] = {
      {"render " + doc + " --dpi 72.5 -o a.png", "--dpi: '72.5' is not a whole number"},
      {"render " + doc + " --dpi 1e3 -o a.png", "--dpi: '1e3' is not a whole number"},
      {"render " + doc + " --dpi abc -o a.png", "--dpi: 'abc' is not a number"},
      {"render " + doc + " --dpi 0 -o a.png", "out of range (1 to 2400)"},
      {"render " + doc + " --threads 2.5 -o a.png", "--threads: '2.5' is not a whole number"},
      {"render " + doc + " --text-size 1e2 --text x -o a.png", "--text-size: '1e2'"},
      {"render " + doc + " --dpix 100 -o a.png", "unknown option '--dpix' (did you mean '--dpi'?)"},
      {"render " + doc + " -o a.png -o b.png", "--output is given twice ('a.png' and 'b.png')"},
      {"render " + doc + " --pages 3-1 -o a.png", "'3-1' runs backwards"},
      {"render " + doc + " --pages 0 -o a.png", "pages count from 1"},
      {"render " + doc + " -o a.bmp", "cannot tell the format of 'a.bmp'"},
      {"render " + doc + " -f jpeg -o a.png", "--format JPEG but 'a.png' names PNG"},
      {"render " + doc + " " + doc + " -o a.png", "several input files need a folder"},
      {"render " + doc, "no output"},
      {"render " + doc + " -o", "option '-o' needs a value"},
      {"seal " + doc + " --size 200 -o s.png", "--size: '200' is not a size WxH"},
      {"seal " + doc + " --dpi 300 --size 20x20 -o s.png", "--dpi and --size exclude each other"},
      {"digest " + doc + " --alg sha3", "--alg: 'sha3' is not one of"},
      {"text " + doc, "no text"},
      {"rendr " + doc, "unknown command 'rendr' (did you mean 'render'?)"},
      {"--versoin", "did you mean '--version'?"},
  };
  for (const auto& c : cases) {
    const Outcome r = Tarvik(c.args);
    EXPECT_EQ(r.code, 2) << c.args;
    EXPECT_NE(r.err.find(c.message), std::string::npos) << c.args << "\n" << r.err;
    EXPECT_TRUE(r.out.empty()) << c.args;
  }
  EXPECT_FALSE(fs::exists(dir_ / "a.png"));
}

TEST_F(Cli, FailuresNameTheFileAndTheSystemsReason) {
  const std::string folder = "'" + std::string(TARVIK_SOURCE_DIR) + "/testdata'";
  const std::string doc = "'" + Sample("signed_v4_png.ofd") + "'";
  const struct {
    std::string args;
    const char* message;
  } cases[] = {
      {"render " + folder + " -o a.png", "testdata: is a folder"},
      {"info " + folder, "testdata: is a folder"},
      {"seal " + folder + " -o s.png", "testdata: cannot read: it is a directory"},
      {"digest " + folder, "testdata: cannot read: it is a directory"},
      {"render missing.ofd -o a.png", "missing.ofd: cannot open (No such file or directory)"},
      {"digest missing.bin", "missing.bin: cannot read (No such file or directory)"},
      {"render " + doc + " --page 2 -o a.png", "there is no page 2 (the document has 1 page)"},
      {"render " + doc + " -o no/such/dir/a.png", "no/such/dir/a-1.png: cannot write (No such file or directory)"},
      {"seal '" + std::string(TARVIK_SOURCE_DIR) + "/README.md' -o s.png", "README.md: neither a picture"},
  };
  for (const auto& c : cases) {
    const Outcome r = Tarvik(c.args);
    EXPECT_EQ(r.code, 1) << c.args;
    EXPECT_NE(r.err.find(c.message), std::string::npos) << c.args << "\n" << r.err;
  }
}

TEST_F(Cli, HelpAndVersion) {
  for (const char* command : {"render", "seal", "info", "text", "digest"}) {
    const Outcome r = Tarvik(std::string(command) + " --help");
    EXPECT_EQ(r.code, 0) << command;
    EXPECT_NE(r.out.find("usage: tarvik " + std::string(command)), std::string::npos) << command;
    EXPECT_NE(r.out.find("exit status"), std::string::npos) << command;
  }
  EXPECT_NE(Tarvik("render --help").out.find("--pages LIST"), std::string::npos);
  const Outcome version = Tarvik("--version");
  EXPECT_EQ(version.code, 0);
  for (const char* library : {"cairo", "FreeType", "libpng", "libjpeg-turbo", "libzip", "pugixml",
                              "OpenSSL"}) {
    EXPECT_NE(version.out.find(library), std::string::npos) << library;
  }
}

TEST_F(Cli, RenderWritesEachFormatUnderTheExpectedNames) {
  TARVIK_NEED_FONTS("AR PL UMing CN");  // the page's text, embedded in the PDF
  const std::string doc = "'" + Sample("signed_v4_png.ofd") + "' -q";
  ASSERT_EQ(Tarvik("render " + doc + " -o page.png").code, 0);
  EXPECT_EQ(PngSize(Slurp(dir_ / "page-1.png")), std::make_pair(1240, 1753));
  ASSERT_EQ(Tarvik("render " + doc + " --page 1 --dpi 60 -o one.png").code, 0);
  EXPECT_EQ(PngSize(Slurp(dir_ / "one.png")), std::make_pair(496, 701));
  ASSERT_EQ(Tarvik("render " + doc + " --pages 1 -o page.jpg --quality 50").code, 0);
  EXPECT_EQ(Slurp(dir_ / "page.jpg").compare(0, 3, "\xFF\xD8\xFF"), 0);
  ASSERT_EQ(Tarvik("render " + doc + " -o bare").code, 0);
  EXPECT_TRUE(fs::exists(dir_ / "bare-1.png"));

  ASSERT_EQ(Tarvik("render " + doc + " -o doc.pdf").code, 0);
  const std::string pdf = Slurp(dir_ / "doc.pdf");
  const PdfFacts facts = ReadPdf(pdf);
  EXPECT_TRUE(facts.header);
  EXPECT_EQ(facts.pages, 1);
  EXPECT_NEAR(facts.width, 210 / 25.4 * 72, 0.01);
  EXPECT_NEAR(facts.height, 297 / 25.4 * 72, 0.01);
  EXPECT_NE(pdf.find("/FontFile"), std::string::npos) << "text embedded as a font";
  EXPECT_NE(pdf.find("/Subtype /Image"), std::string::npos) << "the seal as an image";
  EXPECT_LT(pdf.size(), Slurp(dir_ / "page-1.png").size());

  ASSERT_EQ(Tarvik("render " + doc + " --format svg -o page").code, 0);
  pugi::xml_document svg;
  ASSERT_TRUE(svg.load_file((dir_ / "page-1.svg").c_str()));
  EXPECT_STREQ(svg.document_element().name(), "svg");
  EXPECT_STREQ(svg.document_element().attribute("width").value(), "210mm");
  EXPECT_STREQ(svg.document_element().attribute("height").value(), "297mm");
}

TEST_F(Cli, RenderToStandardOutput) {
  const std::string doc = "'" + Sample("signed_v4_png.ofd") + "'";
  Outcome r = Tarvik("render " + doc + " --page 1 --dpi 30 -o -");
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(PngSize(r.out), std::make_pair(248, 350));
  r = Tarvik("render " + doc + " -f pdf -o -");
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(ReadPdf(r.out).pages, 1);
  EXPECT_FALSE(fs::exists(dir_ / "-"));
}

TEST_F(Cli, SeveralInputsIntoAFolderWithThreads) {
  const std::string inputs = "'" + Sample("signed_v4_png.ofd") + "' '" + Sample("signed_v1_png.ofd") +
                             "' '" + Sample("signed_v4_ofdseal.ofd") + "' --dpi 50 -q";
  ASSERT_EQ(Tarvik("render " + inputs + " --threads 1 -o one/").code, 0);
  ASSERT_EQ(Tarvik("render " + inputs + " --threads 3 -o three/").code, 0);
  for (const char* name : {"signed_v4_png-1.png", "signed_v1_png-1.png", "signed_v4_ofdseal-1.png"}) {
    const std::string one = Slurp(dir_ / "one" / name);
    EXPECT_EQ(PngSize(one), std::make_pair(413, 584)) << name;
    EXPECT_EQ(one, Slurp(dir_ / "three" / name)) << name;
  }
  ASSERT_EQ(Tarvik("render " + inputs + " -o pdfs/ -f pdf").code, 0);
  EXPECT_EQ(ReadPdf(Slurp(dir_ / "pdfs" / "signed_v1_png.pdf")).pages, 1);
}

TEST_F(Cli, PagesOfOneDocumentOnTwoThreadsMatchOneThread) {
  const fs::path file = fs::path(TARVIK_FIXTURE_DIR) / "ofdrw__h.ofd";
  TARVIK_NEED_FIXTURE(file);
  const std::string doc = "'" + file.string() + "' --dpi 40 -q --pages 2-4,1";
  ASSERT_EQ(Tarvik("render " + doc + " --threads 1 -o a.png").code, 0);
  ASSERT_EQ(Tarvik("render " + doc + " --threads 2 -o b.png").code, 0);
  for (int page : {1, 2, 3, 4}) {
    const std::string a = Slurp(dir_ / ("a-" + std::to_string(page) + ".png"));
    EXPECT_GT(PngSize(a).first, 0) << page;
    EXPECT_EQ(a, Slurp(dir_ / ("b-" + std::to_string(page) + ".png"))) << page;
  }
  EXPECT_FALSE(fs::exists(dir_ / "a-5.png"));
  ASSERT_EQ(Tarvik("render " + doc + " -o all.pdf").code, 0);
  EXPECT_EQ(ReadPdf(Slurp(dir_ / "all.pdf")).pages, 4);
}

TEST_F(Cli, SealPictures) {
  Outcome r = Tarvik("seal '" + Sample("sample_seal.ofd") + "' --size 200x200 -o s.png");
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(PngSize(Slurp(dir_ / "s.png")), std::make_pair(200, 200));
  r = Tarvik("seal '" + Sample("sample_seal.png") + "' --gray --text-size 20 --text x -o s.pdf");
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(ReadPdf(Slurp(dir_ / "s.pdf")).pages, 1);
  r = Tarvik("seal '" + Sample("sample_seal.png") + "' -o s.svg -q");
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_TRUE(r.out.empty());
  pugi::xml_document svg;
  EXPECT_TRUE(svg.load_file((dir_ / "s.svg").c_str()));
  const fs::path esl = fs::path(TARVIK_FIXTURE_DIR) / "ofdrw__UserV4.esl";
  if (fs::exists(esl)) {
    r = Tarvik("seal '" + esl.string() + "' -o -");
    EXPECT_EQ(r.code, 0) << r.err;
    EXPECT_GT(PngSize(r.out).first, 0);
  }
}

TEST_F(Cli, VerifyGivesVerdictsAndExitCodes) {
  // An altered copy of the signed sample: one signed file changed.
  const std::string altered = (dir_ / "altered.ofd").string();
  const std::string copy = "cp '" + Sample("signed_v4_png.ofd") + "' '" + altered +
                           "' && cd '" + dir_.string() + "' && mkdir -p Doc_0 && echo ' ' > Doc_0/PublicRes.xml" +
                           " && zip -q altered.ofd Doc_0/PublicRes.xml";
  const bool haveZip = std::system(copy.c_str()) == 0;
  const std::string trust = "--trust '" + Sample("sample_root.pem") + "'";
  struct Case {
    std::string args;
    int code;
    const char* text;  // in standard output, or standard error for usage errors
  } cases[] = {
      {"verify '" + Sample("signed_v4_png.ofd") + "'", 0, "): intact"},
      {"verify '" + Sample("signed_v1_png.ofd") + "' " + trust, 0, "): valid"},
      {"verify '" + Sample("signed_v4_png.ofd") + "' --json " + trust, 0, "\"verdict\": \"valid\""},
      {"verify", 2, "no input file"},
      {"verify --trusted x", 2, "--trust"},
  };
  for (const Case& c : cases) {
    const Outcome r = Tarvik(c.args);
    EXPECT_EQ(r.code, c.code) << c.args << "\n" << r.err;
    EXPECT_NE((c.code == 2 ? r.err : r.out).find(c.text), std::string::npos) << c.args << "\n" << r.out << r.err;
  }
  if (haveZip) {
    const Outcome r = Tarvik("verify altered.ofd");
    EXPECT_EQ(r.code, 1);
    EXPECT_NE(r.out.find("changed: /Doc_0/PublicRes.xml"), std::string::npos) << r.out;
  }
}

}  // namespace
