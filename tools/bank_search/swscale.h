// What people use instead: libswscale's bicubic scaler at its most accurate.
#pragma once

#include "picture.h"

Picture ScaleBySwscale(const Picture& in, int width, int height);
