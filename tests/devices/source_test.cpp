// Independent sources: type and model tables, the signal's parameters under
// the source's names, the file element with its "Signal" child.
#include <gtest/gtest.h>

#include "components/param_ops.h"
#include "device_b_support.h"
#include "devices/source.h"

namespace tz4 {
namespace {

using devtest::ExpectParams;
using devtest::ExpectRoundTrip;
using devtest::ExpectType;
using devtest::Load;
using devtest::Store;

TEST(SourceTypes, TablesAsTheFileAndHostSeeThem) {
  const std::vector<devtest::ModelRow> signalRows = {
      {"Pulse", 2, 1, 23}, {"Step", 3, 1, 23},     {"Sin", 4, 1, 23},   {"PWL", 8, 1, 23},
      {"Function", 5, 1, 23}, {"File", 6, 1, 23}, {"Trace", 53, 1, 23}, {"SubCir", 7, 0, 5}};
  std::vector<devtest::ModelRow> voltage = {{"V", 13, 1, 23}};
  voltage.insert(voltage.end(), signalRows.begin(), signalRows.end());
  ExpectType("V_V", 2, "Voltage source", voltage);
  std::vector<devtest::ModelRow> current = {{"I", 13, 1, 23}};
  current.insert(current.end(), signalRows.begin(), signalRows.end());
  ExpectType("I_I", 2, "Current source", current);
}

TEST(SourceParams, SignalSettingsUnderTheSourcesNames) {
  for (const char* tag : {"V_V", "I_I"}) {
    const std::string letter = tag[0] == 'V' ? "V" : "I";
    const char* high = letter == "V" ? "V1" : "I1";
    const char* low = letter == "V" ? "V0" : "I0";
    auto v = devtest::CreateAs<CElemV>(tag);
    ExpectParams(*v, letter, {{letter.c_str(), PK_VALUE}});
    ExpectParams(*v, "Pulse",
                 {{high, PK_VALUE}, {low, PK_VALUE}, {"Period", PK_VALUE}, {"Width", PK_VALUE},
                  {"Slope", PK_ENUM}, {"Rise", PK_VALUE}, {"Fall", PK_VALUE}, {"Delay", PK_VALUE}});
    ExpectParams(*v, "Step",
                 {{high, PK_VALUE}, {low, PK_VALUE}, {"Slope", PK_ENUM}, {"Rise", PK_VALUE},
                  {"Delay", PK_VALUE}});
    ExpectParams(*v, "Sin",
                 {{high, PK_VALUE}, {low, PK_VALUE}, {"Period", PK_VALUE}, {"Phase", PK_VALUE},
                  {"Delay", PK_VALUE}});
    ExpectParams(*v, "PWL", {{"pwl", PK_PWL_SOURCE}, {"Cycle", PK_YES_NO}, {"Delay", PK_VALUE}});
    ExpectParams(*v, "Function", {{"F(t)", PK_FORMULA_TEXT}});
    ExpectParams(*v, "File", {{"File", PK_DATA_FILE}, {"Cycle", PK_YES_NO}, {"Delay", PK_VALUE}});
    ExpectParams(*v, "Trace", {{"Trace", PK_NAME}, {"Cycle", PK_YES_NO}, {"Delay", PK_VALUE}});
  }

  // The rows reach this source's own signal.
  auto i = devtest::CreateAs<CElemV>("I_I");
  devtest::SelectModel(*i, "Pulse");
  CParam param;
  ASSERT_TRUE(i->FindParam("i1", param));
  EXPECT_EQ(SetText(param, "2.5", nullptr, nullptr), 0);
  EXPECT_EQ(i->Signal.U1.Value, 2.5);
  ASSERT_TRUE(i->FindParam("Slope", param));
  EXPECT_EQ(SetText(param, "Cos", nullptr, nullptr), 0);
  EXPECT_EQ(i->Signal.Slope.Index, 1);
  EXPECT_FALSE(i->FindParam("V1", param));
  devtest::SelectModel(*i, "PWL");
  ASSERT_TRUE(i->FindParam("cycle", param));
  EXPECT_EQ(SetText(param, "Yes", nullptr, nullptr), 0);
  EXPECT_EQ(i->Signal.Cycle, 1);
}

TEST(SourceArchive, ConstantSourceWithoutSignal) {
  const std::string element =
      "<Cmp type=\"V_V\" id=\"1\" name=\"V1\" file_name=\"\" view=\"0\" node0=\"1\" node1=\"0\" "
      "model=\"V\" v=\"5\" />";
  ExpectRoundTrip<CElemV>("V_V", element);
  auto v = Load<CElemV>("V_V", "<Cmp type=\"V_V\" id=\"1\" name=\"V1\" node0=\"1\" node1=\"0\" model=\"V\" />");
  ASSERT_NE(v, nullptr);
  EXPECT_EQ(v->Value.Value, 10.0);
  EXPECT_EQ(v->Signal.U1.Value, 10.0);
  EXPECT_EQ(v->Signal.PwlText, "0,0");
}

TEST(SourceArchive, SignalChildStoresBackUnchanged) {
  ExpectRoundTrip<CElemV>(
      "V_V",
      "<Cmp type=\"V_V\" id=\"2\" name=\"VP\" file_name=\"\" view=\"0\" node0=\"1\" node1=\"0\" "
      "model=\"Pulse\" v=\"10\"><Signal u0=\"-1\" u1=\"1\" p=\"1e-3\" w=\"500e-6\" s=\"1\" r=\"1e-6\" "
      "f=\"2e-6\" d_str=\"%3dt0\" d=\"0\" ph=\"0\" function=\"sin(t)+1\" file=\"\" pwl=\"0%2c0\" "
      "trace=\"\" c=\"0\" /></Cmp>");
  // A constant source keeps a signal that the file gave it.
  ExpectRoundTrip<CElemV>(
      "I_I",
      "<Cmp type=\"I_I\" id=\"3\" name=\"I1\" file_name=\"\" view=\"0\" node0=\"0\" node1=\"1\" "
      "model=\"I\" v=\"1e-3\"><Signal u0=\"0\" u1=\"10\" p=\"1\" w=\"500e-3\" s=\"0\" r=\"0\" f=\"0\" "
      "d=\"0\" ph=\"0\" function=\"10\" file=\"my+data.txt\" pwl=\"0%2c0%2c1%2c5\" trace=\"\" c=\"1\" "
      "/></Cmp>");
}

TEST(SourceArchive, SignalModelWritesItsSignalEvenWhenTheFileHadNone) {
  auto v = Load<CElemV>("V_V",
                        "<Cmp type=\"V_V\" id=\"1\" name=\"VS\" node0=\"1\" node1=\"0\" model=\"Sin\" />");
  ASSERT_NE(v, nullptr);
  const std::string stored = Store(*v);
  EXPECT_NE(stored.find("<Signal u0=\"0\" u1=\"10\" p=\"1\" w=\"500e-3\""), std::string::npos) << stored;
  EXPECT_NE(stored.find("pwl=\"0%2c0\""), std::string::npos) << stored;
}

TEST(SourceIC, DelayOfTheTimedModels) {
  auto v = devtest::CreateAs<CElemV>("V_V");
  v->name = "V9";
  std::string text;
  devtest::SelectModel(*v, "V");
  EXPECT_EQ(v->GetICText(text), "");
  devtest::SelectModel(*v, "Pulse");
  v->Signal.Delay.Value = 1.5e-3;
  EXPECT_EQ(v->GetICText(text), "V9.Delay=1.5e-3");
  devtest::SelectModel(*v, "Function");
  EXPECT_EQ(v->GetICText(text), "");
  devtest::SelectModel(*v, "Trace");
  EXPECT_EQ(v->GetICText(text), "V9.Delay=1.5e-3");
}

}  // namespace
}  // namespace tz4
