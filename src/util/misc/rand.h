// Small random whole numbers from the standard library's generator.
#pragma once

namespace skarnel {

/// A pseudo-random whole number, normally 0..n-1 (for negative n: n+1..0), from std::rand, which
/// is not seeded here. Two rare things are kept as they are: the largest values of the generator
/// round up to 1 as a float, so n itself comes up now and then; and the result passes through 16
/// bits, so an n above 32767 gives negative numbers, too.
int Rand(int n);

/// The arithmetic of Rand for one value of the generator (0..2^31-1).
int randFromGenerator(int generated, int n);

}  // namespace skarnel
