// The fixed-step wave model of a lossy transmission line.
#include <cmath>

#include "devices/delay_line.h"

namespace tz4 {

namespace {

constexpr double kPi = 3.14159265358;

}  // namespace

void CLossyLine::Clear() {
  Waves.clear();
  for (Stage& stage : Stages) stage = Stage{};
  StageCount = 0;
  Gf1.clear();
  Gf2.clear();
  HasGf = false;
  Sections = 0;
  LastTime = NextTime = 0.0;
  OutA = OutB = 0.0;
}

// The shunt's frequency term, when it has one.
void CLossyLine::SetupShunt() {
  HasGf = Gs > 0 && Fg > 0 && std::isfinite(Fg);
  if (!HasGf) return;
  const size_t n = static_cast<size_t>(Sections - 1);
  Gf1.assign(n, 0.0);
  Gf2.assign(Rtotal > 0 ? n : 0, 0.0);
  const double c = Dt * 2 * kPi * Fg * 1000000.0 / Gs;
  if (Rtotal > 0) {
    const double e = Rtotal * 0.5 / c;
    A -= e;
    B += e;
    H = Rtotal * 0.5 / Z0 / c;
  } else {
    const double e = Z0 / c;
    A += e;
    B -= e;
    H = 1 / c;
  }
}

int CLossyLine::Setup(double step) {
  Clear();
  if (!(Delay > 0) || !(step > 0) || !std::isfinite(Delay)) return -1;
  Dt = step;
  const double count = std::ceil(Delay / step);
  if (!(count < 1e8)) return -1;
  Sections = std::max(2, static_cast<int32_t>(count));
  Waves.assign(static_cast<size_t>(Sections), {0.0, 0.0});
  NextTime = 0.0;
  Rs = (R / (Sections - 1)) * Delay * 1000000000.0;
  Gs = (G / (Sections - 1)) * Delay * 1000000000.0;
  Rtotal = Rs;
  if (Rs > 0) {
    StageCount = (Fr <= 0 || std::isinf(Fr)) ? 0 : 4;
    for (int i = 0; i < StageCount; ++i) {
      Stage& stage = Stages[i];
      if (i == 0) {
        stage.Rstage = (std::sqrt(10.0) - 1) * Rs;
        stage.L = Rs / 10 / Fr / 1000000.0;
      } else {
        stage.Rstage = std::sqrt(10.0) * Stages[i - 1].Rstage;
        stage.L = Stages[i - 1].L / std::sqrt(10.0);
      }
      const double a = stage.L / Dt;
      stage.Reff = a * stage.Rstage / (a + stage.Rstage);
      stage.K = stage.Rstage / (a + stage.Rstage);
      Rtotal += stage.Reff;
      stage.state.assign(static_cast<size_t>(Sections - 1), 0.0);
      if (stage.L / stage.Rstage <= Dt) {
        StageCount = i + 1;
        break;
      }
    }
    const double zr = Rtotal / Z0, g = Rtotal * 0.5 * Gs;
    A = -zr - 1 - g;
    B = 1 - zr + g;
    SetupShunt();
    C = 1 / (A * A - 1);
  } else if (Gs > 0) {
    StageCount = 0;
    const double g = Gs * Z0;
    A = g + 1;
    B = 1 - g;
    SetupShunt();
    C = 1 / (A * A - 1);
  }
  return 0;
}

// One section: the forward wave `carry` enters it, the backward wave of the
// next node comes back through it.
void CLossyLine::Section(int i, double& carry) {
  const size_t k = static_cast<size_t>(i);
  const double p = Waves[k].first, q = Waves[k + 1].second;
  Waves[k].first = carry;
  if (Rtotal > 0) {
    double s = 0.0;
    for (int j = 0; j < StageCount; ++j) s += Stages[j].state[k] * Stages[j].Reff;
    double u = B * q - p + s / Z0, w = B * p - q - s / Z0;
    if (HasGf) {
      w -= H * Gf1[k];
      u -= H * Gf2[k];
    }
    const double y = (A * w - u) * C;
    carry = (A * u - w) * C;
    Waves[k].second = y;
    if (HasGf || StageCount > 0) {
      const double i1 = (y + p) * Z0, i2 = (q + carry) * Z0;
      if (HasGf) {
        Gf1[k] = i1;
        Gf2[k] = i2;
      }
      if (StageCount > 0) {
        const double m = (i2 - i1 + s) / Rtotal;
        for (int j = 0; j < StageCount; ++j)
          Stages[j].state[k] += (m - Stages[j].state[k]) * Stages[j].K;
      }
    }
  } else if (Gs <= 0) {
    carry = p;
    Waves[k].second = q;
  } else {
    double v = B * q + p, z = B * p + q;
    if (HasGf) {
      v += Gf1[k] * H;
      z += Gf1[k] * H;
    }
    Waves[k].second = (z * A - v) * C;
    carry = (v * A - z) * C;
    if (HasGf) Gf1[k] = (q + carry) * Z0;
  }
}

void CLossyLine::Advance(double t, double a, double b) {
  if (!(Delay > 0) || Sections == 0) return;
  const size_t last = static_cast<size_t>(Sections - 1);
  if (t <= 0) {
    for (auto& wave : Waves) wave = {a, b};
    OutA = a;
    OutB = b;
    return;
  }
  OutA = Waves[0].first;
  OutB = Waves[last].second;
  while (t >= NextTime) {
    double carry = a;
    for (int i = 0; i + 1 < Sections; ++i) Section(i, carry);
    Waves[last] = {carry, b};
    LastTime = NextTime;
    NextTime += Dt;
  }
}

}  // namespace tz4
