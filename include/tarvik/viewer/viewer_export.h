// Export macro of the document library.
#pragma once

#if defined(TARVIK_VIEWER_BUILDING)
#define TARVIK_VIEWER_API __attribute__((visibility("default")))
#else
#define TARVIK_VIEWER_API
#endif
