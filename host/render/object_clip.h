// Clips of page objects (Clips/Clip/Area). Internal to the renderer.
#pragma once

#include "host/base/device.h"
#include "host/base/matrix.h"

namespace host {

class OfdPageObject;

/// Intersects the device's clip with each of the object's clips in turn;
/// `parent` maps the object's parent coordinates to the device. A clip is
/// the union of its areas: path areas by their outline, text areas by their
/// boundary. The caller saves and restores the device state around it.
void ApplyObjectClips(Device& device, const OfdPageObject& object, const Matrix& parent);

/// Appends `path` mapped by `matrix` to `out`; false (out unchanged past the
/// fault) when a point is not finite.
bool AppendMappedPath(const Path& path, const Matrix& matrix, Path& out);

}  // namespace host
