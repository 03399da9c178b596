// GraphicsDevices: whether this machine can draw with a graphics processor.
//
// Qt Quick draws through OpenGL by default. On a machine without a GPU (a
// virtual machine, a remote X server, a test server) Mesa then emulates
// OpenGL on the processor (llvmpipe), which is slower for the overlay's flat
// 2D scene than Qt Quick's own software renderer and costs a few hundred
// milliseconds and tens of megabytes just to start. The kernel offers every
// GPU that user programs may draw with as a DRM node in /dev/dri, so their
// absence is a reliable, cheap sign that OpenGL would be emulated.
//
// Thread rules: plain functions over the file system; any thread.
#pragma once

#include <filesystem>

namespace orrery::platform {

// True when `devices` (normally /dev/dri) holds a render or card node.
bool hasGraphicsDevice(const std::filesystem::path& devices = "/dev/dri");

}  // namespace orrery::platform
