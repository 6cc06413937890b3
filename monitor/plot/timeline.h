// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// What a recording tells, as curves over the time.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "recording/recording.h"

namespace norvik::qel::monitor {

struct Timeline {
  struct Point {
    double at;  // seconds
    double value;
  };
  using Curve = std::vector<Point>;
  using Moments = std::vector<double>;
  using Spans = std::vector<std::pair<double, double>>;  // from, to

  double end = 0;
  Curve level;
  Spans wireless;
  Spans dock;
  bool has_battery = false;
  Curve hinge_angle;
  Curve proximity;
  std::map<std::string, Curve> severities;  // by TYPE:NAME
  // By service.
  std::map<std::string, Moments> started;
  std::map<std::string, Moments> died;
  std::map<std::string, Moments> refused;
  std::map<std::string, Moments> called;  // by family
};

Timeline MakeTimeline(const Recording& recording);

}  // namespace norvik::qel::monitor
