// A small family of classes for tests: devices of a plant, counted natives that somebody may
// destroy while scripts hold them.
#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "host/vcos/class.h"
#include "host/vcos/native.h"

namespace vcos::plant {

struct Device {
  explicit Device(std::string_view itsClass) : className(itsClass) { ++live; }
  virtual ~Device() { --live; }

  std::string_view className;
  int references = 0;
  bool isAlive = true;
  std::u16string name;
  static int live;
};

struct Tank : Device {
  Tank() : Device("plant.Tank") {}
  double level = 0;
  bool isOpen = false;
  int kind = 1;
  double capacity = 100;
};

struct Valve : Device {
  Valve() : Device("plant.Valve") {}
};

/// Every device is counted, and lives until its last reference goes.
extern const NativeFamily kDevices;
/// Gauges of a tank: a part of it.
extern const NativeFamily kGauges;

/// What the methods of devices throw when told to.
struct Trouble : std::exception {
  const char* what() const noexcept override { return "the pump is jammed"; }
};

/// Makes the package "plant" known; again does nothing.
void registerPlant();

}  // namespace vcos::plant
