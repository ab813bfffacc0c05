#include "support/hostile_documents.h"

#include <cstdint>
#include <string>

#include "support/zip_builder.h"

namespace testing_support {

namespace {

std::string Composites(int unitId, int fan) {
  std::string body;
  for (int i = 0; i < fan; ++i) {
    body += "<ofd:CompositeObject ID=\"" + std::to_string(100000 + i) + "\" ResourceID=\"" +
            std::to_string(unitId) + "\" Boundary=\"" + std::to_string(i % 5) + " 0 10 10\"/>";
  }
  return body;
}

std::string CompositeUnits(int units, int fan) {
  std::string inner = "<ofd:CompositeGraphicUnits>";
  for (int u = 1; u <= units; ++u) {
    std::string content;
    if (u < units) {
      content = Composites(u + 1, fan);
    } else {
      for (int i = 0; i < fan; ++i)
        content += "<ofd:PathObject ID=\"" + std::to_string(200000 + i) + "\" Boundary=\"0 0 5 5\">"
                   "<ofd:AbbreviatedData>M 0 0 L 5 5 L 0 5 C</ofd:AbbreviatedData></ofd:PathObject>";
    }
    inner += "<ofd:CompositeGraphicUnit ID=\"" + std::to_string(u) +
             "\" Width=\"10\" Height=\"10\"><ofd:Content>" + content + "</ofd:Content></ofd:CompositeGraphicUnit>";
  }
  return inner + "</ofd:CompositeGraphicUnits>";
}

std::string CompositeDocument(int units, int fan, const std::string& pageArea) {
  return BuildOfdPackage(
      {{"Doc_0/Document.xml",
        OfdDocumentXml({{1000, "Pages/Page_0/Content.xml"}},
                       "<ofd:PageArea><ofd:PhysicalBox>" + pageArea + "</ofd:PhysicalBox></ofd:PageArea>"
                           "<ofd:PublicRes>PublicRes.xml</ofd:PublicRes>")},
       {"Doc_0/PublicRes.xml", OfdResXml(CompositeUnits(units, fan))},
       {"Doc_0/Pages/Page_0/Content.xml", OfdPageXml(Composites(1, 1))}});
}

}  // namespace

std::string CompositeFanOutPackage(int units, int fan) {
  return CompositeDocument(units, fan, "0 0 210 297");
}

std::string CompositeFanOutSealPackage(int units, int fan) {
  return CompositeDocument(units, fan, "0 0 30 20");
}

std::string TemplateFanOutPackage(int templates, int fan) {
  ZipEntries files;
  std::string common;
  for (int t = 1; t <= templates; ++t) {
    const std::string loc = "Tpls/Tpl_" + std::to_string(t) + "/Content.xml";
    common += "<ofd:TemplatePage ID=\"" + std::to_string(t) + "\" BaseLoc=\"" + loc + "\"/>";
    std::string head;
    if (t < templates)
      for (int i = 0; i < fan; ++i) head += "<ofd:Template TemplateID=\"" + std::to_string(t + 1) + "\"/>";
    files.push_back({"Doc_0/" + loc,
                     OfdPageXml("<ofd:PathObject ID=\"5\" Boundary=\"0 0 20 20\">"
                                "<ofd:AbbreviatedData>M 0 0 L 20 20 L 0 20 C</ofd:AbbreviatedData>"
                                "</ofd:PathObject>",
                                head)});
  }
  files.push_back({"Doc_0/Document.xml", OfdDocumentXml({{1000, "Pages/Page_0/Content.xml"}}, common)});
  files.push_back({"Doc_0/Pages/Page_0/Content.xml", OfdPageXml("", "<ofd:Template TemplateID=\"1\"/>")});
  return BuildOfdPackage(files);
}

std::string SelfCrossingPathsPackage(int paths, int points) {
  std::string body;
  for (int p = 0; p < paths; ++p) {
    std::string data = "M 0 0";
    data.reserve(static_cast<size_t>(points) * 16);
    for (int i = 1; i < points; ++i) {
      // Alternate between the top and the bottom edge, stepping across.
      const int x = static_cast<int>((int64_t{i} * 7919 + p * 131) % 210);
      data += (i % 2) ? " L " + std::to_string(x) + " 297" : " L " + std::to_string(x) + " 0";
    }
    body += "<ofd:PathObject ID=\"" + std::to_string(10 + p) +
            "\" Boundary=\"0 0 210 297\" Fill=\"true\" Stroke=\"true\"><ofd:AbbreviatedData>" +
            data + " C</ofd:AbbreviatedData></ofd:PathObject>";
  }
  return BuildOfdPackage({{"Doc_0/Document.xml", OfdDocumentXml({{1000, "Pages/Page_0/Content.xml"}})},
                          {"Doc_0/Pages/Page_0/Content.xml", OfdPageXml(body)}});
}

}  // namespace testing_support
