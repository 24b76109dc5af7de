// Scalar, colour and plan types shared by every subsystem.
// One set of arguments is used throughout, so plain aliases replace template parameters.
#pragma once

#include <fftw3.h>

namespace gridmoor {

using Colour = unsigned char;
using Real = double;
using FftPlan = fftw_plan;

}  // namespace gridmoor
