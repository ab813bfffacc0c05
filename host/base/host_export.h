// Export macro of the host platform library.
#pragma once

#if defined(_WIN32)
#define HOST_API __declspec(dllexport)
#else
#define HOST_API __attribute__((visibility("default")))
#endif
