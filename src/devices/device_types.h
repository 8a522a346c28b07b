// The component types defined by the device families, gathered in two
// groups; CElemSet puts them into their fixed order.
#pragma once
#include <vector>

#include "components/elem_type.h"

namespace tz4 {

// Resistors, capacitors, inductors, sources, diodes and thyristors.
std::vector<const ElemType*> DeviceTypesA();
// Switches, transistors, amplifiers, controlled sources, logic elements and
// the logic generator.
std::vector<const ElemType*> DeviceTypesB();
// Function blocks, delays and lines, transformers, meters and blocks, and
// the code blocks. (Labels and variables are created by the collection.)
std::vector<const ElemType*> DeviceTypesC();

}  // namespace tz4
