// The document library: open an OFD document, render its pages with their
// seals, list its signatures; decode seal files. Everything is in namespace
// tarvik::viewer; nothing is thrown across it.
#pragma once

#include "tarvik/viewer/document.h"
#include "tarvik/viewer/render_options.h"
#include "tarvik/viewer/seal_file.h"
#include "tarvik/viewer/signature_info.h"
#include "tarvik/viewer/status.h"
