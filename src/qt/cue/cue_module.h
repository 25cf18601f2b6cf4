// The functions of the sound module, which is loaded at the first play and never before.
//
// The module stands on libsndfile, which reads AIFF, and on the simple interface of libpulse: one
// small client library that both PulseAudio and PipeWire answer, where QtMultimedia would bring a
// media framework, and ALSA alone takes the device away from others or is not there in a sandbox.
#pragma once

#include <cstddef>
#include <cstdint>

extern "C" {

/// Decodes the bytes of a sound file and starts playing on a thread of its own; returns at once.
/// Null when the bytes are no sound. The bytes may go after the call.
using SkarnelCueStart = void*(const std::uint8_t* bytes, std::size_t count);

/// Ends the playing soon, if it has not ended yet, and frees what `start` gave. With `wait` true
/// it returns when the thread is done or, from a sound server that does not answer, after a quarter
/// of a second.
using SkarnelCueStop = void(void* playing, bool wait);
}

namespace skarnel {
inline constexpr const char* kCueModuleName = "libskarnel-cue.so";
inline constexpr const char* kCueStartName = "skarnelCueStart";
inline constexpr const char* kCueStopName = "skarnelCueStop";
}  // namespace skarnel
