// Continuous resampling kernels. All are even, 1 at 0 or thereabouts, and are evaluated by IEEE additions,
// multiplications and divisions alone, so that a sample is the same double with every compiler and C library.
#pragma once

namespace vidproc::filters {

enum class KernelFamily {
  kCubic,    ///< two-parameter family of piecewise cubics; support 2
  kLanczos,  ///< sinc windowed by the main lobe of a wider one; support `lobes`
  kBox,      ///< what an interval of `width` covers of a sample; support (width + 1) / 2; width 1 is the triangle
};

struct KernelShape {
  KernelFamily family;
  double b, c;     ///< of kCubic: 0 and 1/2 is Catmull-Rom, 1/3 and 1/3 Mitchell
  double lobes;    ///< of kLanczos
  double width;    ///< of kBox, in samples, at least 1
  double stretch;  ///< factor by which the kernel is widened
};

constexpr KernelShape Cubic(double b, double c, double stretch) { return {KernelFamily::kCubic, b, c, 0, 0, stretch}; }
constexpr KernelShape Lanczos(double lobes, double stretch) {
  return {KernelFamily::kLanczos, 0, 0, lobes, 0, stretch};
}
constexpr KernelShape Box(double width) { return {KernelFamily::kBox, 0, 0, 0, width, 1}; }
constexpr KernelShape Triangle(double stretch) { return {KernelFamily::kBox, 0, 0, 0, 1, stretch}; }

/// The kernel at a distance from its centre, in samples. Not scaled to any sum.
double SampleShape(const KernelShape& shape, double distance);

}  // namespace vidproc::filters
