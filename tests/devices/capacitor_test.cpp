// Capacitors: the text of their initial condition.
#include <gtest/gtest.h>

#include "device_b_support.h"
#include "devices/capacitor.h"

namespace tz4 {
namespace {

using devtest::Load;

TEST(CapacitorIC, TextNamesTheComponentAndShowsAnEmptyIC) {
  auto c = devtest::CreateAs<CElemC>("C_C");
  c->name = "C7";
  devtest::SelectModel(*c, "C");
  std::string text;
  EXPECT_EQ(c->GetICText(text), "C7.IC=\"\"");
  c->ICText = "1.5";
  c->path = "X1";
  EXPECT_EQ(c->GetICText(text), "X1.C7.IC=1.5");
  devtest::SelectModel(*c, "PWL");
  EXPECT_EQ(c->GetICText(text), "X1.C7.IC=1.5");
  devtest::SelectModel(*c, "Function");
  EXPECT_EQ(c->GetICText(text), "");
}

}  // namespace
}  // namespace tz4
