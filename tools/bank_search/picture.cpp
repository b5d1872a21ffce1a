#include "picture.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <numbers>
#include <numeric>
#include <random>
#include <sstream>
#include <stdexcept>

namespace {

struct Size {
  int width = 0, height = 0;
};

Size ReadHeader(std::istream& file) {
  std::string line;
  std::getline(file, line);
  std::istringstream words(line);
  std::string word;
  Size size;
  bool lumaOnly = false;
  while (words >> word) {
    if (word[0] == 'W') size.width = std::stoi(word.substr(1));
    if (word[0] == 'H') size.height = std::stoi(word.substr(1));
    if (word == "Cmono") lumaOnly = true;
  }
  if (size.width < kSizeUnit || size.height < kSizeUnit || !lumaOnly)
    throw std::runtime_error("not a luma YUV4MPEG2 file");
  return size;
}

Picture Cut(const Picture& whole) {
  Picture part(whole.width / kSizeUnit * kSizeUnit, whole.height / kSizeUnit * kSizeUnit);
  for (int y = 0; y < part.height; ++y) std::copy_n(whole.Row(y), part.width, part.Row(y));
  return part;
}

}  // namespace

std::vector<Picture> ReadClip(const std::string& path, int count) {
  std::ifstream file(path, std::ios::binary);
  const Size size = ReadHeader(file);
  std::vector<Picture> all;
  Picture frame(size.width, size.height);
  std::string marker;
  while (std::getline(file, marker) &&
         file.read(reinterpret_cast<char*>(frame.samples.data()), static_cast<std::streamsize>(frame.samples.size()))) {
    all.push_back(Cut(frame));
  }
  std::vector<Picture> spread;
  const std::size_t step = std::max<std::size_t>(1, all.size() / static_cast<std::size_t>(count));
  for (std::size_t i = 0; i < all.size() && spread.size() < static_cast<std::size_t>(count); i += step) {
    spread.push_back(std::move(all[i]));
  }
  return spread;
}

Picture DrawZonePlate(int size) {
  Picture plate(size, size);
  const double centre = size / 2.0 - 0.3;
  for (int y = 0; y < size; ++y) {
    for (int x = 0; x < size; ++x) {
      const double squaredRadius = (x - centre) * (x - centre) + (y - centre) * (y - centre);
      const double wave = std::cos(std::numbers::pi * squaredRadius / size);
      plate.Row(y)[x] = static_cast<std::uint8_t>(std::lround(126 + 109 * wave));
    }
  }
  return plate;
}

Picture DrawDiscs(int size) {
  constexpr int kFine = 4;  // samples of the drawing in each direction of a sample of the picture
  const int fineSize = kFine * size;
  Picture drawing(fineSize, fineSize);
  std::mt19937 random(1);
  const auto below = [&random](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
  for (int disc = 0; disc < 4000; ++disc) {
    // The number of discs falls with the cube of the radius, as in pictures of objects at all distances.
    const int radius = static_cast<int>(fineSize / 3.0 / std::sqrt(1.0 + below(4000)));
    const int x0 = below(fineSize), y0 = below(fineSize);
    const auto level = static_cast<std::uint8_t>(16 + below(220));
    for (int y = std::max(0, y0 - radius); y < std::min(fineSize, y0 + radius); ++y) {
      const int half = static_cast<int>(std::sqrt(radius * radius - (y - y0) * (y - y0)));
      std::fill(drawing.Row(y) + std::max(0, x0 - half), drawing.Row(y) + std::min(fineSize, x0 + half), level);
    }
  }
  Picture picture(size, size);
  for (int y = 0; y < size; ++y) {
    for (int x = 0; x < size; ++x) {
      int sum = 0;
      for (int row = 0; row < kFine; ++row) {
        const std::uint8_t* fine = drawing.Row(kFine * y + row) + kFine * x;
        sum = std::accumulate(fine, fine + kFine, sum);
      }
      picture.Row(y)[x] = static_cast<std::uint8_t>(sum / (kFine * kFine));
    }
  }
  return picture;
}

double SquaredError(const Picture& a, const Picture& b) {
  double sum = 0;
  for (int y = 0; y < a.height; ++y) {
    int row = 0;
    for (int x = 0; x < a.width; ++x) row += (a.Row(y)[x] - b.Row(y)[x]) * (a.Row(y)[x] - b.Row(y)[x]);
    sum += row;
  }
  return sum;
}
