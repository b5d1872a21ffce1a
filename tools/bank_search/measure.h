// What scaling down and up again costs: luma PSNR over pictures of one kind, for the library's banks and a peer.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "picture.h"
#include "resample.h"

struct Content {
  std::string name;
  std::vector<Picture> pictures;
  std::map<std::string, double> peerPsnr;  // by the name of the ratio
};

struct Ratio {
  int up, down;  // of the smaller picture to the larger one
};

using Scaler = std::function<Picture(const Picture& in, int width, int height)>;

/// PSNR in dB of the whole content: from the mean squared error of all its pictures.
double MeasurePsnr(const Content& content, Ratio ratio, const Scaler& down, const Scaler& up);
