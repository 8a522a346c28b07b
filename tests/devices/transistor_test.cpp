// Transistors: type tables, parameters per model and polarity, the file
// element, and the descriptive overrides.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "device_b_support.h"
#include "devices/transistor.h"

namespace tz4 {
namespace {

using devtest::ExpectParams;
using devtest::ExpectType;
using devtest::Load;
using devtest::SelectModel;
using devtest::Store;

TEST(TransistorTypes, Tables) {
  for (const char* tag : {"T_TNPN", "T_TPNP"}) {
    ExpectType(tag, 3, tag[3] == 'N' ? "NPN transistor" : "PNP transistor",
               {{"Linear", 15, 2, 7}, {"Switch", 14, 2, 7}, {"Transistor", 19, 3, 7}, {"SubCir", 7, 0, 5}});
  }
  for (const char* tag : {"T_NFET", "T_PFET"}) {
    ExpectType(tag, 3, tag[2] == 'N' ? "N-FET" : "P-FET",
               {{"Linear", 15, 1, 7},
                {"Switch", 14, 1, 7},
                {"FET", 20, 1, 7},
                {"FET-D", 57, 1, 7},
                {"SubCir", 7, 0, 5}});
  }
}

TEST(TransistorParams, BipolarTables) {
  for (const char* tag : {"T_TNPN", "T_TPNP"}) {
    auto cmp = devtest::CreateAs<CElemT>(tag);
    ASSERT_NE(cmp, nullptr);
    ExpectParams(*cmp, "Linear", {{"B", PK_VALUE}, {"f1", PK_VALUE}, {"IC", PK_IC}});
    ExpectParams(*cmp, "Switch", {{"Vbe", PK_VALUE}, {"IC", PK_ON_OFF}});
    ExpectParams(*cmp, "Transistor",
                 {{"B", PK_VALUE},
                  {"f1", PK_VALUE},
                  {"Vbe", PK_VALUE},
                  {"Vsat", PK_VALUE},
                  {"IC", PK_IC},
                  {"ICbe", PK_ON_OFF},
                  {"ICbc", PK_ON_OFF}});
  }
}

TEST(TransistorParams, FetTables) {
  for (const char* tag : {"T_NFET", "T_PFET"}) {
    auto cmp = devtest::CreateAs<CElemT>(tag);
    ASSERT_NE(cmp, nullptr);
    ExpectParams(*cmp, "Linear", {{"S", PK_VALUE}, {"f1", PK_VALUE}, {"IC", PK_IC}});
    ExpectParams(*cmp, "Switch", {{"Vth", PK_VALUE}, {"IC", PK_ON_OFF}});
    ExpectParams(*cmp, "FET", {{"S", PK_VALUE}, {"Vth", PK_VALUE}, {"Rdson", PK_VALUE}, {"IC", PK_ENUM}});
    ExpectParams(*cmp, "FET-D",
                 {{"S", PK_VALUE}, {"Vth", PK_VALUE}, {"Rdson", PK_VALUE}, {"Vd", PK_VALUE}, {"IC", PK_ENUM}});
  }
}

TEST(TransistorParams, OneNameServesEachModelsOwnMember) {
  auto fet = devtest::CreateAs<CElemT>("T_NFET");
  CParam p;
  ASSERT_TRUE(SelectModel(*fet, "FET"));
  ASSERT_TRUE(fet->FindParam("ic", p));
  EXPECT_EQ(std::get<CEnumValue*>(p.Value), &fet->FetIc);
  EXPECT_STREQ(fet->FetIc.Names[3], "Minus");
  EXPECT_EQ(fet->FetIc.Names[4], nullptr);
  ASSERT_TRUE(SelectModel(*fet, "FET-D"));
  ASSERT_TRUE(fet->FindParam("IC", p));
  EXPECT_EQ(std::get<CEnumValue*>(p.Value), &fet->FetDIc);
  EXPECT_STREQ(fet->FetDIc.Names[4], "Diode");
  ASSERT_TRUE(fet->FindParam("vth", p));
  EXPECT_EQ(std::get<CFormula*>(p.Value), &fet->Vbe);
  ASSERT_TRUE(SelectModel(*fet, "Switch"));
  ASSERT_TRUE(fet->FindParam("IC", p));
  EXPECT_EQ(std::get<int32_t*>(p.Value), &fet->SwitchIc);

  auto npn = devtest::CreateAs<CElemT>("T_TNPN");
  ASSERT_TRUE(SelectModel(*npn, "Transistor"));
  ASSERT_TRUE(npn->FindParam("b", p));
  EXPECT_EQ(std::get<CFormula*>(p.Value), &npn->K);
  ASSERT_TRUE(npn->FindParam("IC", p));
  EXPECT_EQ(std::get<std::string*>(p.Value), &npn->ICText);
}

TEST(TransistorFile, DefaultsDependOnPolarityGroup) {
  auto npn = Load<CElemT>("T_TNPN", "<Cmp type=\"T_TNPN\" name=\"Q1\" model=\"Transistor\" />");
  ASSERT_NE(npn, nullptr);
  EXPECT_EQ(npn->K.Value, 1.0);
  EXPECT_TRUE(std::isinf(npn->F1.Value) && npn->F1.Value > 0);
  EXPECT_EQ(npn->Vbe.Value, 0.7);
  EXPECT_EQ(npn->Vsat.Value, 0.0);
  EXPECT_EQ(npn->ICText, "");
  EXPECT_EQ(Store(*npn),
            "<Cmp type=\"T_TNPN\" id=\"0\" name=\"Q1\" file_name=\"\" view=\"0\" node0=\"0\" node1=\"0\" "
            "node2=\"0\" model=\"Transistor\" k=\"1\" f1=\"inf\" vbe=\"700e-3\" ic=\"\" s_ic=\"0\" "
            "vsat=\"0\" be_ic=\"0\" bc_ic=\"0\" />");

  auto fet = Load<CElemT>("T_PFET", "<Cmp type=\"T_PFET\" name=\"M1\" model=\"FET\" />");
  ASSERT_NE(fet, nullptr);
  EXPECT_EQ(fet->Vbe.Value, 0.0);
  EXPECT_EQ(fet->Rdson.Value, 1.0);
  EXPECT_EQ(fet->Vd.Value, 0.7);
  EXPECT_EQ(Store(*fet),
            "<Cmp type=\"T_PFET\" id=\"0\" name=\"M1\" file_name=\"\" view=\"0\" node0=\"0\" node1=\"0\" "
            "node2=\"0\" model=\"FET\" k=\"1\" f1=\"inf\" vbe=\"0\" ic=\"\" s_ic=\"0\" rdson=\"1\" "
            "vd=\"700e-3\" fet_ic=\"0\" fetd_ic=\"0\" />");
}

TEST(TransistorFile, CircuitRoundTrip) {
  devtest::ExpectCircuitRoundTrip(
      "<Cmps>"
      "<Cmp type=\"T_NFET\" id=\"4\" name=\"M2\" file_name=\"\" view=\"0\" node0=\"1\" node1=\"0\" "
      "node2=\"3\" model=\"FET-D\" k=\"20e-3\" f1=\"inf\" vbe=\"2\" ic=\"\" s_ic=\"0\" rdson=\"0\" "
      "vd=\"1\" fet_ic=\"3\" fetd_ic=\"4\" />"
      "<Cmp type=\"T_TPNP\" id=\"3\" name=\"Q2\" file_name=\"\" view=\"0\" node0=\"1\" node1=\"2\" "
      "node2=\"3\" model=\"Linear\" k_str=\"%3dBeta\" k=\"150\" f1=\"1e+6\" vbe=\"650e-3\" "
      "ic=\"-1.5e-3\" s_ic=\"1\" vsat=\"200e-3\" be_ic=\"1\" bc_ic=\"0\" />"
      "<Cmp type=\"T_TNPN\" id=\"5\" name=\"Q3\" file_name=\"\" view=\"0\" node0=\"2\" node1=\"0\" "
      "node2=\"3\" model=\"SubCir\" k=\"1\" f1=\"inf\" vbe=\"700e-3\" ic=\"\" s_ic=\"0\" vsat=\"0\" "
      "be_ic=\"0\" bc_ic=\"0\">"
      "<SubCir file=\"\" label1=\"\" label2=\"\" label3=\"\" cmd=\"\" ic=\"\" /></Cmp>"
      "</Cmps>");
}

TEST(TransistorBehaviour, InitialConditionText) {
  auto q = Load<CElemT>("T_TNPN", "<Cmp type=\"T_TNPN\" name=\"Q1\" model=\"Transistor\" />");
  std::string text;
  EXPECT_EQ(q->GetICText(text), "Q1.IC=\"\";Q1.ICBE=off;Q1.ICBC=off");
  q->ICText = "1e-3";
  q->IcBc = 1;
  EXPECT_EQ(q->GetICText(text), "Q1.IC=1e-3;Q1.ICBE=off;Q1.ICBC=on");
  ASSERT_TRUE(SelectModel(*q, "Linear"));
  EXPECT_EQ(q->GetICText(text), "Q1.IC=1e-3");
  ASSERT_TRUE(SelectModel(*q, "Switch"));
  EXPECT_EQ(q->GetICText(text), "Q1.IC=off");
  q->SwitchState = 1;
  EXPECT_EQ(q->GetICText(text), "Q1.IC=on");
  ASSERT_TRUE(SelectModel(*q, "SubCir"));
  EXPECT_EQ(q->GetICText(text), "");

  auto m = Load<CElemT>("T_NFET", "<Cmp type=\"T_NFET\" name=\"M1\" model=\"FET-D\" fetd_ic=\"4\" fet_ic=\"2\" />");
  EXPECT_EQ(m->GetICText(text), "M1.IC=Diode");
  ASSERT_TRUE(SelectModel(*m, "FET"));
  EXPECT_EQ(m->GetICText(text), "M1.IC=Plus");
}

TEST(TransistorBehaviour, TracesRunFromEmitterToCollector) {
  auto q = Load<CElemT>(
      "T_TNPN", "<Cmp type=\"T_TNPN\" name=\"Q1\" node0=\"1\" node1=\"2\" node2=\"3\" model=\"Linear\" />");
  q->firstRow = 8;
  int a = 0, b = 0, row = 0;
  double value = 1;
  EXPECT_TRUE(q->GetTraceInfo(1, a, b, row, value));
  EXPECT_EQ(a, 2);
  EXPECT_EQ(b, 3);
  EXPECT_EQ(row, 8);
  EXPECT_EQ(value, 0.0);
  EXPECT_FALSE(q->GetTraceInfo(2, a, b, row, value));  // power is computed by the device
  ASSERT_TRUE(SelectModel(*q, "Transistor"));
  EXPECT_TRUE(q->GetTraceInfo(0, a, b, row, value));
  EXPECT_FALSE(q->GetTraceInfo(1, a, b, row, value));
  EXPECT_FALSE(q->GetTraceInfo(7, a, b, row, value));
  ASSERT_TRUE(SelectModel(*q, "SubCir"));
  EXPECT_TRUE(q->GetTraceInfo(6, a, b, row, value));
  EXPECT_FALSE(q->GetTraceInfo(1, a, b, row, value));

  auto m = devtest::CreateAs<CElemT>("T_PFET");
  ASSERT_TRUE(SelectModel(*m, "FET"));
  EXPECT_TRUE(m->GetTraceInfo(2, a, b, row, value));
}

}  // namespace
}  // namespace tz4
