// Export macro of the seal library.
#pragma once

#if defined(TARVIK_BUILDING)
#define TARVIK_API __attribute__((visibility("default")))
#else
#define TARVIK_API
#endif
