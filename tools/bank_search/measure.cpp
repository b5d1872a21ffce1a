#include "measure.h"

#include <cmath>

double MeasurePsnr(const Content& content, Ratio ratio, const Scaler& down, const Scaler& up) {
  double squaredError = 0;
  double samples = 0;
  for (const Picture& picture : content.pictures) {
    const int width = picture.width * ratio.up / ratio.down;
    const int height = picture.height * ratio.up / ratio.down;
    squaredError += SquaredError(picture, up(down(picture, width, height), picture.width, picture.height));
    samples += static_cast<double>(picture.samples.size());
  }
  return 10 * std::log10(255.0 * 255.0 * samples / squaredError);
}
