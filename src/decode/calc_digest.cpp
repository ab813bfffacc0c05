#include <cstdint>
#include <string>

#include "host/oes/oes_plugin.h"
#include "tarvik/tarvik.h"

namespace tarvik {

namespace {
constexpr int StepwiseDigestCapability = 17;
constexpr int DigestChunkSize = 16384;
}  // namespace

int CalcDigest(unsigned char* data, unsigned int length, const char* algorithm,
               host::OESPlugin* plugin, void* userData, BinaryBuf& digest) {
  if (!plugin || (!data && length != 0)) return -1;
  const std::string name(algorithm ? algorithm : "");
  const char* bytes = reinterpret_cast<const char*>(data);
  std::string out;
  bool done = false;

  // Offsets are signed 32-bit: longer data goes to the one-shot digest.
  if (length <= 0x7FFFFFFFu && plugin->QueryCapability(StepwiseDigestCapability)) {
    uintptr_t handle = 0;
    if (plugin->DigestStart(userData, &handle, name) == 0) {
      const int total = static_cast<int>(length);
      const int count = total / DigestChunkSize + (total % DigestChunkSize != 0 ? 1 : 0);
      for (int i = 0; i < count; ++i) {
        const int offset = i * DigestChunkSize;
        const int size = i == count - 1 ? total - offset : DigestChunkSize;
        if (plugin->DigestUpdate(userData, handle, std::string(bytes + offset, size)) != 0) break;
      }
      done = plugin->DigestFinish(userData, handle, out) == 0;
    }
  }
  if (!done) {
    const std::string whole = length ? std::string(bytes, length) : std::string();
    const int result = plugin->Digest(userData, whole, name, out);
    if (result != 0) return result;
  }
  digest.AppendBuf(out.data(), static_cast<int>(out.size()));
  return 0;
}

int OESDigestCalculator::CalcDigest(unsigned char* data, unsigned int length,
                                    const char* algorithm, BinaryBuf& digest) {
  return tarvik::CalcDigest(data, length, algorithm, plugin_, userData_, digest);
}

}  // namespace tarvik
