// How much work a colour profile asks for with each colour, looked up before it is applied.
#pragma once

#include "imaging/io/image_io.h"

namespace skarnel::io {

/// Whether one of the profile's chains of elements (type 'mpet', ICC.1:2010, 10.14) is longer,
/// wider or dearer than any that a camera, monitor or printer is described by. A chain names its
/// elements by their places, so that a few bytes named thousands of times are thousands of tables,
/// and the library asks every one of them for each of its own table's points. All other kinds of
/// tags have a fixed number of steps. What is damaged weighs what can be read of it: the library
/// refuses it by itself.
bool isHeavyProfile(ByteView profile);

}  // namespace skarnel::io
