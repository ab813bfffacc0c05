#include "support/fonts.h"

#include <filesystem>
#include <map>

#include "host/base/app_context.h"
#include "host/base/font_mgr.h"

namespace testing_support {

std::string MissingFont(std::initializer_list<const char*> families) {
  // Families whose files are not named after them.
  static const std::map<std::string, std::string> kFiles = {
      {"WenQuanYi Zen Hei", "wqy-zenhei"}, {"AR PL UKai CN", "ukai"}, {"AR PL UMing CN", "uming"},
      {"Noto Sans CJK SC", "NotoSansCJK"}, {"Lohit Tamil", "Lohit-Tamil"}};
  for (const std::string family : families) {
    const auto known = kFiles.find(family);
    std::string part = known != kFiles.end() ? known->second : family;
    std::erase(part, ' ');
    const std::string file = host::AppContext::Get()->GetFontMgr()->ResolveFile(family, 400, false, nullptr);
    if (std::filesystem::path(file).filename().string().find(part) == std::string::npos) return family;
  }
  return {};
}

}  // namespace testing_support
