// CCalc: the solver. Turns the components of a run into one dense linear
// system
//
//     A x + B dx/dt + c + s(t) = 0
//
// and solves it: a full solve per step, a pair solve for the initial
// conditions, a kept factorisation for steady stepping, and the resolution of
// the devices' switching states.
//
// Index 0 of every vector is ground and is never solved; column 0 of A and B
// is scratch room for the constant term. `x` holds ground, the matrix nodes,
// the extra rows, and behind `dim` the logic nodes, which no equation has.
//
// Storage: both matrices live in one contiguous block, A first. Rows are
// reached through the row pointers `A[i]`, `B[i]` (and `maskA[i]`, `maskB[i]`
// for the masks), so a row swap is a pointer swap. The matrices are the
// solver's own: devices write their equations only through the checked
// operations below, which share one rule for what lies inside the system.
#pragma once
#include <cstdint>
#include <ctime>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tz4 {

// Processor time of the process in milliseconds, modulo 2^32: the unit of
// CCalc::runClock and of every time-out, whatever the platform's clock unit.
inline uint32_t ProcessMillis() {
  const std::clock_t ticks = std::clock();
  if (ticks == static_cast<std::clock_t>(-1)) return 0;  // no clock: time-outs never fire
  const double ms = static_cast<double>(ticks) * 1000.0 / static_cast<double>(CLOCKS_PER_SEC);
  return static_cast<uint32_t>(static_cast<uint64_t>(ms));
}

class CCmp;
class CCmps;

// What a run tells the solver of its circuit's settings; the driver fills it
// at each call.
struct CCalcSettings {
  double zero = 1e-11;  // numerical zero
  int32_t timeout = 0;  // time limit of one call in ms of processor time; 0 none
  bool nsr = false;     // no step reduction: sources do not cut steps at corners
  std::string folder;   // folder of the circuit file, for relative data files
};

class CCalc {
 public:
  CCalc();
  virtual ~CCalc();
  CCalc(const CCalc&) = delete;
  CCalc& operator=(const CCalc&) = delete;

  // ---- building the system ----
  // Appends one collection to the run list: offsets its node numbers by
  // `nodeBase`, sends STAMP_RESET to components whose model changed and
  // STAMP_INIT to all. 0, or the last non-zero code; -2 stops the walk.
  int AddComponents(CCmps& collection);
  // Empties the run list and sets `nodeBase` to 0.
  void ClearRunList();
  // Unifies the node pairs in `merges` (the smaller number survives).
  void MergeNodes();
  // Renumbers the pins: matrix nodes 1..M, extra rows M+1.., logic nodes
  // from `dim`. Sets `firstRow` of every component, `dim` and `total`.
  void NumberNodes();
  // False with `error` "no enough memory" or "schematic too big".
  bool AllocateSystem();
  void FreeSystem();
  // Zeroes both matrices, c, s, sB, the masks, rowMark and rowFree.
  void ClearSystem();

  // ---- component loops (model 7 components are skipped) ----
  bool StampMatrices(double t);
  bool StampSources(double t);
  void AcceptAll();
  int AdjustIC();
  bool SampleAll(double t);
  void SaveIC();
  void NextEvent(double t, double& nextTime, double& maxStep);

  // ---- checked writes: the one surface through which devices stamp ----
  // Rows and columns 1 .. dim-1 take part in the system. Ground (0, whose
  // column is the solver's scratch room for the constant term), unconnected
  // pins (negative) and logic nodes (dim and above) have no equation: a
  // write that names one of them does nothing.
  bool InMatrix(int i) const { return i > 0 && i < dim; }
  void AddCoupling(int row, int col, double v);  // A(row, col) += v
  void SetCoupling(int row, int col, double v);  // A(row, col) = v
  void AddDerivative(int row, int col, double v);  // B(row, col) += v
  void SetDerivative(int row, int col, double v);  // B(row, col) = v
  void SetConstant(int row, double v);             // c(row) = v
  void AddConstant(int row, double v);             // c(row) += v
  // Empties row `row` of A and its constant, so that a device can write the
  // row's whole equation (a node forced to a value).
  void ClearRow(int row);
  // The time-dependent term of a row, s(t), and its slope ds/dt.
  void SetSource(int row, double v);
  void SetSourceSlope(int row, double v);
  // Marks a row whose source varies, or whose unknown is not fixed by the
  // last solve (rowMark 1).
  void MarkRow(int row);
  // The mark of the last solve: 0 solved, 1 free or a varying source, 255
  // contradictory; 0 outside the matrix.
  uint8_t RowMark(int row) const;

  // ---- what the driver keeps around a step ----
  // Keeps x and s as the values at the start of the step, and puts them
  // back when the step is refused.
  void KeepStepStart();
  void RestoreStepStart();

  // ---- matrix primitives; a, b, ctrl nodes, r a row ----
  void StampConductance(int a, int b, double R);
  bool StampVSource(int a, int b, int r, double v);
  bool StampOutVoltage(int a, int b, int r, double v);
  void StampISource(int a, int b, int r, double i);
  void StampOutCurrent(int a, int b, int r, double i);
  void StampResistor(int a, int b, int r, double R);
  void StampTransconductance(int a, int b, int c, int d, int r, double g);
  void StampGainVV(int a, int b, int c, int d, int r, double g);
  void StampGainVI(int a, int b, int r, int ctrl, double g);
  void StampCurrentGain(int a, int b, int r, int ctrl, double g);
  void StampClamp(int a, int b, int r, bool on, double v);
  void StampLogicOutput(int node, int level);
  // Whether an ideal clamp (diode, switch) must change its state; moves
  // `state` when `apply` is set.
  bool CheckClamp(bool apply, int32_t& state, int a, int b, int r, double von, double voff,
                  bool twoSided);
  // Solution value at a node or row; 0 for ground, unconnected pins and
  // numbers outside the vector.
  double V(int node) const {
    return node > 0 && node < static_cast<int>(x.size()) ? x[static_cast<size_t>(node)] : 0.0;
  }

  // ---- set-ups of one solve ----
  // stampMode 0 (euler false) or backward Euler (euler true), then Solve.
  bool StepAlgebraic(double t, double h, bool euler = false);
  bool StepEuler(double t, double h) { return StepAlgebraic(t, h, true); }
  bool StepTrapezoid(double t, double h);
  bool FactorTrapezoid(double t, double h);
  bool StepFactored(double t);
  // -1 if a stamp failed, else the result of SolveIC.
  int SolveInitial(double t, bool mark, bool final);

  // ---- solvers ----
  // Solves A x + A(.,0) = 0 with the constant term taken from x. 0 solved,
  // 1 some unknown free, -1 a contradiction; details in rowMark.
  int Solve();
  // Factorises A, carrying B and c along; keeps rowMark.
  int Factor();
  // The pair solve of the initial conditions: the impulses that the known
  // values of reactive elements force (column 0 of A), the values after them
  // (x) and the next order (column 0 of B). An unknown with an impulse is
  // marked 1, one that no impulse can satisfy 255. 0 when nothing is marked,
  // 1 when something is, 99 when `mark` newly marked neighbours to be forced.
  int SolveIC(bool mark);
  // matrix(to, .) -= f * matrix(from, .) over the mask of row `from`.
  void RowSubtract(std::vector<double*>& matrix, std::vector<uint8_t*>& mask, int from, int to,
                   double f);

  // ---- switching resolution ----
  // 0 solved; -1 no solution; -2 out of memory; -3 node at infinity;
  // -10 stamp failure; -99 time-out.
  int Calculate(double t, double h, bool euler, bool onlySwitched);
  bool CheckAll(bool apply);
  int CheckCycle();
  std::string NamesAtRow(int row) const;
  // Sets forceIC on the components that share a node with component `index`
  // of the run list; 99 if any was newly set, else 0.
  int MarkNeighbours(size_t index);
  bool PushHistory();
  void ResetHistory();

  // ---- initial conditions ----
  // Finds a solution at t that agrees with the stored values of reactive
  // elements and the states of switching devices, in the state form of the
  // system. 0 done; 99 not settled yet, try again (neighbours of an
  // impulse were newly marked); -1 no solution or a stamp failed; -2, -3,
  // -10 and -99 as Calculate.
  int CalcIC(double t, double h);

  // ---- settings of the run ----
  double Zero() const { return settings.zero; }
  int32_t Timeout() const { return settings.timeout; }
  // Processor time since runClock, in milliseconds.
  double ElapsedClock() const;

  // ---- fields ----
  CCalcSettings settings;
  uint32_t runClock = 0;    // processor clock at the present call into the driver
  std::vector<CCmp*> cmps;  // the flat run list; owns nothing
  double step = 0.0;
  double low = 0.0, high = 5.0, thr = 2.5;
  bool os = false;
  int32_t stampMode = 0;
  bool icPass = false;
  int32_t lineUpdate = 0;
  int32_t pass = 0;
  int32_t nodeBase = 0;
  std::string error;
  std::string cause;
  double stepStart = 0.0;
  double lastTime = 0.0;
  bool icSaved = false;
  std::vector<std::pair<int32_t, int32_t>> merges;
  int32_t dim = 0;
  int32_t total = 0;
  bool rebuild = false;

  std::vector<double> x, xPrev;  // the solution, and at the start of the step

  std::vector<int32_t*> history;  // one array of states per round
  int32_t historyUsed = 0;
  int32_t historyCap = 0;
  int32_t historyChunk = 10;
  bool onlySwitched = false;

 private:
  // Tests and benchmarks of the solver itself look inside.
  friend struct CCalcInternals;

  std::vector<uint8_t*> maskB, maskA;  // row pointers into maskStorage
  std::unique_ptr<double[]> storage;   // 2 * dim * dim, A first
  std::vector<double*> A, B;           // row pointers into storage
  std::vector<double> s, sB, sPrev, c;
  std::vector<uint8_t> rowMark;  // 0 solved, 1 free / varying source, 255 contradiction
  std::vector<uint8_t> rowFree;

  // Elimination helpers shared by the solvers.
  int FindPivot(int k, const std::vector<uint8_t*>& mask, const std::vector<double*>& m,
                bool bothDiagonalsClear) const;
  void SwapRows(int r, int k, bool withB, bool withC);
  bool Eligible(int r, int k, bool bothDiagonals) const;

  // Lists the columns of B that a steady step has to visit.
  void FindStepColumns();

  // Subcircuit flattening of a model 7 component; 0, or -2 to stop the walk.
  int ExpandSubcircuit(CCmp& component);
  void StatesToTop();
  std::vector<size_t> ComponentsAtRow(int row) const;

  std::unique_ptr<uint8_t[]> maskStorage;  // 2 * dim * dim, maskA first
  std::vector<int> colsA, colsB;           // masked columns of a pivot row
  std::vector<double> work;                // the vector of StepFactored
  std::vector<int> stepColumns;            // non-zero columns of the factorised B
  bool stepColumnsValid = false;
  std::vector<std::unique_ptr<int32_t[]>> historyBlocks;
  size_t historyWidth = 0;
};

}  // namespace tz4
