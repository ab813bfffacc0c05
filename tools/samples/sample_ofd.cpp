#include "sample_ofd.h"

#include <zip.h>

#include <cmath>
#include <cstdio>
#include <memory>

namespace samples {
namespace {

constexpr char kHead[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
constexpr char kNs[] = " xmlns:ofd=\"http://www.ofdspec.org/2016\"";
constexpr float kPi = 3.14159265358979f;

struct ZipDeleter {
  void operator()(zip_t* z) const { zip_discard(z); }
};
struct ZipSourceDeleter {
  void operator()(zip_source_t* s) const { zip_source_free(s); }
};

std::string Num(float v) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "%.3f", static_cast<double>(v));
  std::string s = buf;
  while (s.back() == '0') s.pop_back();
  if (s.back() == '.') s.pop_back();
  return s == "-0" ? "0" : s;
}

// Number of characters of a UTF-8 string.
int CountChars(const std::string& utf8) {
  int n = 0;
  for (unsigned char c : utf8) n += (c & 0xC0) != 0x80;
  return n;
}

std::string OfdXml(bool withSignatures) {
  return std::string(kHead) + "<ofd:OFD" + kNs + " Version=\"1.1\" DocType=\"OFD\"><ofd:DocBody>" +
         "<ofd:DocInfo><ofd:DocID>tarvik-sample</ofd:DocID><ofd:Creator>tarvik_make_samples" +
         "</ofd:Creator></ofd:DocInfo><ofd:DocRoot>Doc_0/Document.xml</ofd:DocRoot>" +
         (withSignatures ? "<ofd:Signatures>Doc_0/Signs/Signatures.xml</ofd:Signatures>" : "") +
         "</ofd:DocBody></ofd:OFD>";
}

std::string DocumentXml(float width, float height, int maxId, int pageId) {
  return std::string(kHead) + "<ofd:Document" + kNs + "><ofd:CommonData><ofd:MaxUnitID>" +
         std::to_string(maxId) + "</ofd:MaxUnitID><ofd:PageArea><ofd:PhysicalBox>0 0 " + Num(width) +
         " " + Num(height) + "</ofd:PhysicalBox></ofd:PageArea><ofd:PublicRes>PublicRes.xml" +
         "</ofd:PublicRes></ofd:CommonData><ofd:Pages><ofd:Page ID=\"" + std::to_string(pageId) +
         "\" BaseLoc=\"Pages/Page_0/Content.xml\"/></ofd:Pages></ofd:Document>";
}

std::string PublicResXml() {
  return std::string(kHead) + "<ofd:Res" + kNs + " BaseLoc=\"Res\"><ofd:Fonts>" +
         "<ofd:Font ID=\"1\" FontName=\"宋体\" FamilyName=\"宋体\"/></ofd:Fonts></ofd:Res>";
}

std::string PageXml(const std::string& objects) {
  return std::string(kHead) + "<ofd:Page" + kNs + "><ofd:Content><ofd:Layer ID=\"3\">" + objects +
         "</ofd:Layer></ofd:Content></ofd:Page>";
}

// A line of text in font 1 with its baseline at `size` below the top of its
// boundary; `ctm` turns it (empty for none).
std::string Text(int id, float x, float y, float size, const std::string& text,
                 const char* color, const std::string& ctm = "") {
  const int n = CountChars(text);
  std::string delta = n > 1 ? " DeltaX=\"g " + std::to_string(n - 1) + " " + Num(size) + "\"" : "";
  return "<ofd:TextObject ID=\"" + std::to_string(id) + "\" Boundary=\"" + Num(x) + " " + Num(y) + " " +
         Num(size * static_cast<float>(n) + 1) + " " + Num(size * 1.4f) + "\" Font=\"1\" Size=\"" +
         Num(size) + "\"" + (ctm.empty() ? "" : " CTM=\"" + ctm + "\"") + "><ofd:FillColor Value=\"" +
         color + "\"/><ofd:TextCode X=\"0\" Y=\"" + Num(size) + "\"" + delta + ">" + text +
         "</ofd:TextCode></ofd:TextObject>";
}

std::string Path(int id, const std::string& boundary, const std::string& data, const char* attrs,
                 const std::string& colors) {
  return "<ofd:PathObject ID=\"" + std::to_string(id) + "\" Boundary=\"" + boundary + "\" " + attrs +
         ">" + colors + "<ofd:AbbreviatedData>" + data + "</ofd:AbbreviatedData></ofd:PathObject>";
}

std::string StarData(float cx, float cy, float r) {
  std::string d;
  for (int i = 0; i < 10; ++i) {
    const float radius = i % 2 == 0 ? r : r * 0.382f;
    const float a = -kPi / 2 + static_cast<float>(i) * kPi / 5;
    d += (i == 0 ? "M " : " L ") + Num(cx + radius * std::cos(a)) + " " + Num(cy + radius * std::sin(a));
  }
  return d + " C";
}

std::string PageContent() {
  std::string o;
  o += Text(10, 25, 25, 8, "塔维克签章示例文档", "0 0 0");
  o += Path(11, "20 38 170 1", "M 0 0.5 L 170 0.5", "LineWidth=\"0.5\"",
            "<ofd:StrokeColor Value=\"180 30 30\"/>");
  const char* lines[] = {"本文件由示例生成程序写出，用于演示电子印章的显示。",
                         "印章位于页面右下方，由签名文件中的印章数据绘出。",
                         "签名使用临时生成的密钥，仅作演示，不具效力。"};
  for (int i = 0; i < 3; ++i) o += Text(12 + i, 25, 50 + 10 * static_cast<float>(i), 5, lines[i], "30 30 30");
  o += Path(15, "25 90 160 60", "M 0 0 L 160 0 L 160 60 L 0 60 C", "LineWidth=\"0.35\" Fill=\"true\"",
            "<ofd:FillColor Value=\"240 244 250\"/><ofd:StrokeColor Value=\"60 90 140\"/>");
  for (int i = 1; i < 4; ++i) {
    o += Path(15 + i, "25 " + Num(90 + 15 * static_cast<float>(i)) + " 160 1", "M 0 0 L 160 0",
              "LineWidth=\"0.25\"", "<ofd:StrokeColor Value=\"60 90 140\"/>");
  }
  o += Text(19, 30, 95, 4.5f, "项目：印章显示", "20 20 20");
  o += Text(20, 30, 110, 4.5f, "日期：二〇二五年一月一日", "20 20 20");
  o += Path(21, "100 230 90 0.6", "M 0 0.3 L 90 0.3", "LineWidth=\"0.3\"", "");
  o += Text(22, 100, 232, 4, "（盖章）", "60 60 60");
  return o;
}

// A signature's files, signed over its Signature.xml.
struct SignedFiles {
  std::string signatureXml;
  std::string signedValue;
};

SignedFiles SignPackage(int layout, const PackageFiles& signedFiles, const std::string& seal,
                        const Sm2Signer& signer, std::string_view signingTime) {
  const bool relative = layout == 1;
  const std::string folder = "/Doc_0/Signs/Sign_0/";
  std::string x = std::string(kHead) + "<ofd:Signature" + kNs + "><ofd:SignedInfo>" +
                  "<ofd:Provider ProviderName=\"tarvik_make_samples\" Version=\"1.0\" Company=\"Tarvik\"/>" +
                  "<ofd:SignatureMethod>1.2.156.10197.1.501</ofd:SignatureMethod>" +
                  "<ofd:SignatureDateTime>20250101120000Z</ofd:SignatureDateTime>" +
                  "<ofd:References CheckMethod=\"1.2.156.10197.1.401\">";
  for (const auto& [path, bytes] : signedFiles) {
    x += "<ofd:Reference FileRef=\"/" + path + "\"><ofd:CheckValue>" + Base64(Sm3(bytes)) +
         "</ofd:CheckValue></ofd:Reference>";
  }
  x += "</ofd:References><ofd:StampAnnot ID=\"30\" PageRef=\"2\" Boundary=\"120 200 40 40\"/>";
  x += "<ofd:Seal><ofd:BaseLoc>" + (relative ? std::string() : folder) + "Seal.esl</ofd:BaseLoc></ofd:Seal>";
  x += "</ofd:SignedInfo><ofd:SignedValue>" + (relative ? std::string() : folder) +
       "SignedValue.dat</ofd:SignedValue></ofd:Signature>";
  SignedFiles out;
  out.signedValue = BuildSignature(layout, seal, x, folder + "Signature.xml", signer, signingTime);
  out.signatureXml = std::move(x);
  return out;
}

}  // namespace

std::string Zip(const PackageFiles& files) {
  zip_error_t error;
  zip_error_init(&error);
  std::unique_ptr<zip_source_t, ZipSourceDeleter> buffer(zip_source_buffer_create(nullptr, 0, 0, &error));
  zip_error_fini(&error);
  if (!buffer) return {};
  // Keep the buffer alive after zip_close so its bytes can be read back.
  zip_source_keep(buffer.get());
  std::unique_ptr<zip_t, ZipDeleter> z(zip_open_from_source(buffer.get(), ZIP_TRUNCATE, nullptr));
  if (!z) {
    zip_source_free(buffer.get());  // drops the reference zip_open_from_source did not take
    return {};
  }
  for (const auto& [name, bytes] : files) {
    zip_source_t* src = zip_source_buffer(z.get(), bytes.data(), bytes.size(), 0);
    if (!src || zip_file_add(z.get(), name.c_str(), src, ZIP_FL_ENC_UTF_8) < 0) {
      zip_source_free(src);
      return {};
    }
  }
  if (zip_close(z.get()) != 0) return {};
  z.release();  // zip_close freed it
  std::string out;
  if (zip_source_open(buffer.get()) != 0) return {};
  char chunk[8192];
  zip_int64_t n;
  while ((n = zip_source_read(buffer.get(), chunk, sizeof chunk)) > 0) out.append(chunk, static_cast<size_t>(n));
  zip_source_close(buffer.get());
  return out;
}

std::string SealOfdPackage() {
  const char* red = "<ofd:StrokeColor Value=\"215 38 30\"/>";
  std::string o = Path(10, "0 0 40 40", "M 2 20 A 18 18 0 1 1 38 20 A 18 18 0 1 1 2 20 C",
                       "LineWidth=\"1.4\"", red);
  o += Path(11, "0 0 40 40", StarData(20, 20, 6), "Stroke=\"false\" Fill=\"true\"",
            "<ofd:FillColor Value=\"215 38 30\"/>");
  // The maker's name along the upper arc: one character per text object,
  // each turned to face the centre.
  const char* name[] = {"塔", "维", "克", "示", "例", "印", "章", "有", "限", "公", "司"};
  const int count = 11;
  const float size = 4.2f, radius = 13.5f, span = 230 * kPi / 180;
  for (int i = 0; i < count; ++i) {
    const float a = -kPi / 2 - span / 2 + span * static_cast<float>(i) / (count - 1);
    const float turn = a + kPi / 2, c = std::cos(turn), s = std::sin(turn);
    const float px = 20 + radius * std::cos(a) - c * size / 2, py = 20 + radius * std::sin(a) - s * size / 2;
    const std::string ctm = Num(c) + " " + Num(s) + " " + Num(-s) + " " + Num(c) + " " + Num(px) + " " + Num(py);
    o += "<ofd:TextObject ID=\"" + std::to_string(12 + i) + "\" Boundary=\"0 0 40 40\" Font=\"1\" Size=\"" +
         Num(size) + "\" CTM=\"" + ctm + "\"><ofd:FillColor Value=\"215 38 30\"/><ofd:TextCode X=\"0\" Y=\"" +
         Num(size * 0.85f) + "\">" + name[i] + "</ofd:TextCode></ofd:TextObject>";
  }
  o += Text(30, 15.5f, 27, 4.5f, "样章", "215 38 30");
  return Zip({{"OFD.xml", OfdXml(false)},
              {"Doc_0/Document.xml", DocumentXml(40, 40, 40, 2)},
              {"Doc_0/PublicRes.xml", PublicResXml()},
              {"Doc_0/Pages/Page_0/Content.xml", PageXml(o)}});
}

std::string SignedDocument(int layout, const SealRecipe& recipe, const Sm2Signer& signer, std::string_view signingTime) {
  const std::string seal = BuildSeal(recipe, signer);
  if (seal.empty()) return {};
  const PackageFiles files = SignedDocumentFiles(layout, seal, signer, signingTime);
  return files.empty() ? std::string() : Zip(files);
}

PackageFiles SignedDocumentFiles(int layout, const std::string& seal, const Sm2Signer& signer,
                                 std::string_view signingTime) {
  PackageFiles files = {{"OFD.xml", OfdXml(true)},
                        {"Doc_0/Document.xml", DocumentXml(210, 297, 40, 2)},
                        {"Doc_0/PublicRes.xml", PublicResXml()},
                        {"Doc_0/Pages/Page_0/Content.xml", PageXml(PageContent())},
                        {"Doc_0/Signs/Sign_0/Seal.esl", seal}};
  const std::string list = std::string(kHead) + "<ofd:Signatures" + kNs +
                           "><ofd:MaxSignId>1</ofd:MaxSignId><ofd:Signature ID=\"1\" Type=\"Seal\" " +
                           "BaseLoc=\"Sign_0/Signature.xml\"/></ofd:Signatures>";
  SignedFiles signature = SignPackage(layout, files, seal, signer, signingTime);
  if (signature.signedValue.empty()) return {};
  files.emplace_back("Doc_0/Signs/Signatures.xml", list);
  files.emplace_back("Doc_0/Signs/Sign_0/Signature.xml", std::move(signature.signatureXml));
  files.emplace_back("Doc_0/Signs/Sign_0/SignedValue.dat", std::move(signature.signedValue));
  return files;
}

}  // namespace samples
