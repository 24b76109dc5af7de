#include "solvers/IterativeMethods.h"

#include <omp.h>

#include <cmath>
#include <map>
#include <ostream>
#include <utility>
#include <vector>

#include "common/Fatal.h"
#include "input/KeywordsElasticity.h"
#include "solvers/FieldAlgebra.h"

namespace gridmoor {

namespace {

using Field = ElasticityHyperelasticityImage;

// Below these the product that a method divides by is taken as zero: the iterate already
// solves the system (or the method broke down) and the loop ends. CG's and BiCGSTAB's are
// absolute sums over the voxels, so they depend on the size of the load: on a 17^3 sphere
// composite of contrast 50, a strain load of 1e-4 stalls CG only 1e-9 short of the answer,
// one of 1e-7 after 11 iterations 1e-3 short. MINRES meets its threshold with pairs of unit
// size, except for the first pair, which has the size of the start residual.
constexpr double kCGStall = 1e-16;
constexpr double kMinresStall = 1e-16;
constexpr double kBiCGSTABStall = 1e-20;
// LSQR: a new basis vector whose squared norm is below this fraction of the product it came
// from adds nothing to the Krylov space.
constexpr double kLsqrBreakdown = 1e-16;

// The system (I - L) x = b of an affine step T(x) = b + L(x), with b = T(0). Applying it
// costs one step on a work field, whose input is given as a StepInput, so that the new
// direction a method applies it to is formed in the step's own voxel loop. When b is kept in
// a field ("e0": laws that are not affine linear, where T - b is the best stand-in for L),
// L(p) = T(p) - b. Otherwise the laws are affine linear and L is the step under zero load,
// without temperature change and body force: the affine parts of T are exactly those, so no
// field is spent on b.
class SystemOperator {
 public:
  SystemOperator(Field& x, Field* b, StepKind kind, const StepContext& ctx,
                 const MacroscopicLoad& load, SolverCounters& counters)
      : x_(x), b_(b), kind_(kind), ctx_(ctx), load_(load), counters_(counters) {
    homogeneousCtx_ = ctx;
    homogeneousCtx_.temperatureChange = 0.0;
    homogeneousCtx_.externalForce = nullptr;
    zeroLoad_ = load;
    zeroLoad_.values = {};
  }

  // Products counted for the run's report: b = T(0) and every A(p) of the method. The step
  // that forms L(b) for the start residual is not counted.
  // x := b = T(0); the sums of the step describe b.
  StepSums start() {
    static_cast<FFTImage&>(x_) = 0.0;
    x_.isInFourierSpace = false;
    const StepSums sums = x_.step(kind_, ctx_, load_);
    ++counters_.matrixVectorProducts;
    if (b_) copyValues(*b_, x_);
    x_.stateMark = 0;
    return sums;
  }

  // The first half of a product A(p): q := T(p) with a stored b, L(p) without, for the p that
  // `input` forms (and stores, if it says so). Not counted when the input's row work ended it
  // before its transforms.
  StepSums step(Field& q, const StepInput& input) {
    const StepSums sums = stepUncounted(q, input);
    if (sums.transformed) ++counters_.matrixVectorProducts;
    return sums;
  }

  // The stored b, or null when L is the step under zero load.
  const Field* storedLoad() const { return b_; }

  // q := L(b), the residual b - (I - L) b of the start x = b (after start()).
  void startResidual(Field& q) {
    stepUncounted(q, StepInput().add(1.0, x_));
    if (b_) q.addScaled(*b_, -1.0);
  }

  // The second half, after step(q, input) with input = weight * p: body(offset, ap, sums) on
  // each voxel, ap holding the voxel's values of A(weight p) = weight p - L(weight p). With
  // Write they are also written into q, else q keeps the step's result.
  template <std::size_t N, bool Write = false, class Body>
  std::array<double, N> product(const FFTImage& p, double weight, FFTImage& q, Body&& body) const {
    const std::uint64_t nc = q.nComponents;
    double* qd = q.data();
    const double* pd = p.data();
    const double* bd = b_ ? b_->data() : nullptr;
    return voxelPass<N>(q, [&](std::uint64_t o, std::array<double, N>& s) {
      double ap[FieldProduct::kMaxValues];
      for (std::uint64_t c = 0; c < nc; ++c)
        ap[c] = weight * pd[o + c] + (bd ? bd[o + c] : 0.0) - qd[o + c];
      if constexpr (Write)
        for (std::uint64_t c = 0; c < nc; ++c) qd[o + c] = ap[c];
      body(o, static_cast<const double*>(ap), s);
    });
  }

  // The same row by row (see rowPass): body(offset, ap, sums) with ap the row's values of
  // A(weight p), in a buffer of the thread or, with Write, in q itself. For the hot passes,
  // whose elementwise loops then vectorize.
  template <std::size_t N, bool Write = false, class Body>
  std::array<double, N> productRows(const FFTImage& p, double weight, FFTImage& q,
                                    Body&& body) const {
    const std::uint64_t length = rowLength(q);
    double* qd = q.data();
    const double* pd = p.data();
    const double* bd = b_ ? b_->data() : nullptr;
    return rowPass<N>(q, [&](std::uint64_t o, std::array<double, N>& s) {
      thread_local std::vector<double> buffer;
      if (!Write && buffer.size() < length) buffer.resize(length);
      double* ap = Write ? qd + o : buffer.data();
      productRow(pd + o, weight, bd ? bd + o : nullptr, qd + o, ap, length);
      body(o, static_cast<const double*>(ap), s);
    });
  }

  // ap := weight p + b - q on one row of n values (b null: no load stored). ap may be q.
  static void productRow(const double* p, double weight, const double* b, const double* q,
                         double* ap, std::uint64_t n) {
    // Two loops, with and without b: a choice inside the loop keeps it from vectorizing.
    if (b) {
#pragma omp simd
      for (std::uint64_t i = 0; i < n; ++i) ap[i] = weight * p[i] + b[i] - q[i];
    } else {
#pragma omp simd
      for (std::uint64_t i = 0; i < n; ++i) ap[i] = weight * p[i] - q[i];
    }
  }

 private:
  StepSums stepUncounted(Field& q, const StepInput& input) {
    if (b_) return q.step(kind_, ctx_, load_, input);
    return q.step(kind_, homogeneousCtx_, zeroLoad_, input);
  }

  Field& x_;
  Field* b_;
  StepKind kind_;
  const StepContext& ctx_;
  const MacroscopicLoad& load_;
  SolverCounters& counters_;
  StepContext homogeneousCtx_;
  MacroscopicLoad zeroLoad_;
};

// The criteria's scalars of the iterate x: its norm comes from the method's own passes, the
// stress and divergence are measured on demand.
class IterateValues : public CriterionValues {
 public:
  IterateValues(Field& x, const StepContext& ctx, FFTImage* work) : x_(x), ctx_(ctx), work_(work) {}
  void setFieldNormSquared(double v) { fieldNormSquared_ = v; }
  double simpleValue() override { return std::sqrt(fieldNormSquared_); }
  double stressValue() override { return x_.getStressNormSquared(ctx_); }
  double divergenceValue() override {
    if (!work_) fatal("The divergence criterion needs a work field of the solution's shape");
    return x_.getDivergenceNorm(*work_, ctx_);
  }

 private:
  Field& x_;
  const StepContext& ctx_;
  FFTImage* work_;
  double fieldNormSquared_ = 0.0;
};

// What every method loop shares: its work fields, the operator's counters, the console lines
// and the criteria on the iterate x (the primary field).
class MethodRun {
 public:
  MethodRun(const std::string& method, SolverFields& fields, const StepContext& ctx,
            const MacroscopicLoad& load, const MethodOptions& options,
            const ConvergenceSettings& settings, SolverCounters& counters, std::ostream& out,
            std::ostream& err)
      : method(method),
        x(*fields.deltaE),
        ctx(ctx),
        load(load),
        settings(settings),
        counters(counters),
        out(out),
        kind(stepKindOf(options.routineSet)),
        energy(FieldProduct::energy(x, ctx.reference)),
        tensor(FieldProduct::tensor(x)),
        fields_(fields),
        routineSet_(options.routineSet),
        reportStall_(options.reportStall),
        values_(x, ctx, options.divergenceWork),
        monitor_(settings, out, err) {}

  // A work field of the method.
  Field& field(const std::string& name) {
    Field* f = optionalField(name);
    if (!f) fatal("The iterative method " + method + " needs the work field " + name);
    return *f;
  }
  // A work field that steps run on: planned on first use, the others never transform.
  Field& productField(const std::string& name) {
    Field& f = field(name);
    if (!f.plansCreated) f.createPlans(ctx.keywords ? ctx.keywords->plannerFlag() : "Estimate");
    return f;
  }
  Field* optionalField(const std::string& name) {
    const auto it = fields_.methodFields.find(name);
    if (it == fields_.methodFields.end() || !it->second) return nullptr;
    it->second->isInFourierSpace = false;
    return it->second.get();
  }
  SystemOperator systemOperator() {
    return SystemOperator(x, optionalField("e0"), kind, ctx, load, counters);
  }

  // Criteria start on the start field, whose squared norm is given.
  void startCriteria(double fieldNormSquared) {
    values_.setFieldNormSquared(fieldNormSquared);
    const double e0Simple = settings.useSimple ? std::sqrt(fieldNormSquared) : 0.0;
    const double e0Stress = settings.useStress ? x.getStressNormSquared(ctx) : 0.0;
    monitor_.start(e0Simple, e0Stress, values_);
  }
  void beginIteration(int n) {
    out << "Iteration " << n;
    ++counters.iterations;
    result.iterations = n + 1;
  }
  // x has changed in iteration n: the criteria on it. True when the loop is to end.
  bool endIteration(int n, double fieldNormSquared) {
    x.stateMark = 0;
    if (routineSet_ == RoutineSet::Fixed) x.updateInternalSolution(ctx);
    values_.setFieldNormSquared(fieldNormSquared);
    const bool done = monitor_.check(n, values_);
    out << std::flush;
    return done;
  }
  // The loop ends early because the system has stalled; lineOpen: the iteration's line has no
  // criterion text yet. The note is printed where the caller asks for it (not inside the
  // Newton-Raphson iteration, and only in the run's last load step); the line is closed either
  // way.
  void stalled(bool lineOpen, const std::string& what) {
    if (reportStall_)
      out << (lineOpen ? " - " : "") << method << " stopped: " << what << "\n";
    else if (lineOpen)
      out << "\n";
    out << std::flush;
  }
  NeumannResult finish() {
    result.limitReached = monitor_.limitReached();
    return result;
  }

  const std::string& method;
  Field& x;
  const StepContext& ctx;
  const MacroscopicLoad& load;
  const ConvergenceSettings& settings;
  SolverCounters& counters;
  std::ostream& out;
  const StepKind kind;
  // The methods' product, x . (C0 y): all Krylov methods and slowCG take their dot products
  // and norms in it, not in the sum of squares, because the step's map is self-adjoint in it
  // (CG's and MINRES's short recurrences and LSQR's adjoint rely on that; BiCGSTAB and slowCG
  // use it for the same scale of their scalars). With lambda0 = 0, the usual reference of
  // these methods, it is the field's own tensor product. The criteria use the field's norm.
  const FieldProduct energy;
  const FieldProduct tensor;
  NeumannResult result;

 private:
  SolverFields& fields_;
  RoutineSet routineSet_;
  bool reportStall_;
  IterateValues values_;
  ConvergenceMonitor monitor_;
};

// CG's update of x and r along the last direction p, and the next direction, fused into the
// voxel loop of the step that applies A to that next direction. On each row, with ap = p + b
// - q the row of A p (q still holds the last step's result): x += alpha p, r += alpha ap,
// p := beta p - r, which the step then reads as its input. Per thread it sums the squared
// norms of the new r (in the methods' product) and x (the field's); afterLoop hands them to
// `next`, which says whether the step goes on to its transforms.
template <class Next>
class ConjugateUpdate final : public StepRowWork {
 public:
  ConjugateUpdate(MethodRun& m, Field& r, Field& p, const Field& q, const Field* b, Next next)
      : x_(m.x.data()),
        r_(r.data()),
        p_(p.data()),
        q_(q.data()),
        b_(b ? b->data() : nullptr),
        length_(rowLength(q)),
        energy_(m.energy),
        tensor_(m.tensor),
        sums_(static_cast<std::size_t>(omp_get_max_threads())),
        next_(next) {}

  void set(double alpha, double beta) {
    alpha_ = alpha;
    beta_ = beta;
    for (ThreadSums& s : sums_) s = {};
  }

  void row(std::uint64_t o) override {
    // Two loops, with and without b: a choice inside the loop keeps it from vectorizing.
    const auto [r2, x2] = b_ ? rowWith<true>(o) : rowWith<false>(o);
    ThreadSums& s = sums_[static_cast<std::size_t>(omp_get_thread_num())];
    s.r2 += r2;
    s.x2 += x2;
  }

  bool afterLoop() override {
    double r2 = 0.0;
    double x2 = 0.0;
    for (const ThreadSums& s : sums_) {
      r2 += s.r2;
      x2 += s.x2;
    }
    return next_(r2, x2);
  }

 private:
  template <bool WithB>
  std::pair<double, double> rowWith(std::uint64_t o) {
    double* x = x_ + o;
    double* r = r_ + o;
    double* p = p_ + o;
    const double* q = q_ + o;
    const double* b = WithB ? b_ + o : nullptr;
    const double alpha = alpha_;
    const double beta = beta_;
    const double* we = energy_.rowWeights();
    const double* wt = tensor_.rowWeights();
    double r2 = 0.0;
    double x2 = 0.0;
#pragma omp simd reduction(+ : r2, x2)
    for (std::uint64_t i = 0; i < length_; ++i) {
      double ap = p[i] - q[i];
      if constexpr (WithB) ap += b[i];
      const double xi = x[i] + alpha * p[i];
      const double ri = r[i] + alpha * ap;
      x[i] = xi;
      r[i] = ri;
      p[i] = beta * p[i] - ri;
      r2 += we[i] * ri * ri;
      x2 += wt[i] * xi * xi;
    }
    if (energy_.coupled()) r2 += energy_.rowTraces(r, r);
    if (tensor_.coupled()) x2 += tensor_.rowTraces(x, x);
    return {r2, x2};
  }

  // A cache line per thread.
  struct alignas(64) ThreadSums {
    double r2 = 0.0;
    double x2 = 0.0;
  };

  double* x_;
  double* r_;
  double* p_;
  const double* q_;
  const double* b_;
  std::uint64_t length_;
  const FieldProduct& energy_;
  const FieldProduct& tensor_;
  std::vector<ThreadSums> sums_;
  Next next_;
  double alpha_ = 0.0;
  double beta_ = 0.0;
};

// p . A p, r . A p and A p . A p on one row, A p = p + b - q formed on the way, in a product
// of weights w (without trace terms). Two loops, with and without b: a choice inside the loop
// keeps it from vectorizing.
template <bool WithB>
std::array<double, 3> directionProducts(const double* p, const double* r, const double* q,
                                        const double* b, const double* w, std::uint64_t n) {
  double pAp = 0.0;
  double rAp = 0.0;
  double apAp = 0.0;
#pragma omp simd reduction(+ : pAp, rAp, apAp)
  for (std::uint64_t i = 0; i < n; ++i) {
    double ap = p[i] - q[i];
    if constexpr (WithB) ap += b[i];
    pAp += w[i] * p[i] * ap;
    rAp += w[i] * r[i] * ap;
    apAp += w[i] * ap * ap;
  }
  return {pAp, rAp, apAp};
}

// Conjugate gradients on (I - L) x = b, started at x = b. p: direction, r: gradient A x - b,
// q: where the products run. Two passes over the fields per iteration: one pass reads p, r
// and the step's result for p . A p, r . A p and A p . A p; the step of the next direction then
// updates x and r and forms p := beta p - r in its own voxel loop (ConjugateUpdate), where
// beta needs the new r . r before that loop has summed it: it comes from the three products,
// r' . r' = r . r + 2 alpha r . A p + alpha^2 A p . A p. The sums of the loop give the exact
// r' . r' for the next alpha, and the criteria, which end the step before its transforms when
// the iterate has converged. Laws with internal variables are handed the new iterate by the
// criteria, after that loop: the product of the next direction sees their state of the
// iterate before. CG is a method for linear laws; on others it warns and goes on.
void runCG(MethodRun& m) {
  Field& p = m.field("d_k");
  Field& r = m.field("g_k");
  Field& q = m.productField("Ad_k");
  SystemOperator op = m.systemOperator();
  m.startCriteria(op.start().fieldNormSquared);
  op.startResidual(q);
  const std::uint64_t nc = m.x.nComponents;
  const double* pd = p.data();
  double* rd = r.data();
  const double* qd = q.data();
  const FieldProduct& energy = m.energy;
  // r := -L(b); the first direction, -r, is formed in the first product.
  double rr = voxelPass<1>(q, [&](std::uint64_t o, std::array<double, 1>& s) {
    for (std::uint64_t c = 0; c < nc; ++c) rd[o + c] = -qd[o + c];
    s[0] += energy.norm2(rd + o);
  })[0];
  if (m.settings.maxIter <= 0) return;
  int n = 0;
  m.beginIteration(n);
  op.step(q, StepInput().add(-1.0, r).storedIn(p));
  ConjugateUpdate update(m, r, p, q, op.storedLoad(), [&](double r2, double x2) {
    rr = r2;
    if (m.endIteration(n, x2) || n + 1 >= m.settings.maxIter) return false;
    m.beginIteration(++n);
    return true;
  });
  const double* bd = op.storedLoad() ? op.storedLoad()->data() : nullptr;
  const double* w = energy.rowWeights();
  const std::uint64_t length = rowLength(q);
  for (;;) {
    // p . A p, r . A p and A p . A p in one sweep of each row, A p formed on the way.
    const auto products = rowPass<3>(q, [&](std::uint64_t o, std::array<double, 3>& s) {
      const double* pRow = pd + o;
      const double* rRow = rd + o;
      const double* qRow = qd + o;
      const double* bRow = bd ? bd + o : nullptr;
      auto [pAp, rAp, apAp] = bRow ? directionProducts<true>(pRow, rRow, qRow, bRow, w, length)
                                   : directionProducts<false>(pRow, rRow, qRow, bRow, w, length);
      if (energy.coupled()) {
        thread_local std::vector<double> ap;
        ap.resize(length);
        SystemOperator::productRow(pRow, 1.0, bRow, qRow, ap.data(), length);
        pAp += energy.rowTraces(pRow, ap.data());
        rAp += energy.rowTraces(rRow, ap.data());
        apAp += energy.rowTraces(ap.data(), ap.data());
      }
      s[0] += pAp;
      s[1] += rAp;
      s[2] += apAp;
    });
    if (std::abs(products[0]) < kCGStall) {
      m.stalled(true, "the direction's product vanished");
      break;
    }
    const double alpha = rr / products[0];
    const double beta = (rr + alpha * (2.0 * products[1] + alpha * products[2])) / rr;
    update.set(alpha, beta);
    if (!op.step(q, StepInput().add(1.0, p).fusedWith(update)).transformed) break;
  }
}

// Nesterov's accelerated fixed-point iteration: x_{k+1} = T(y_k), y_{k+1} = x_{k+1} +
// (k - 1) / (k + 2) (x_{k+1} - x_k). The momentum is dropped (k := 0, y := x_{k+1}) when the
// squared change |x_k - x_{k+1}|^2 has fallen since the last iteration, after at least
// restartMinIter iterations since the last restart; while it rises or stays, the momentum is
// kept. This direction of the test is the method's, not an oversight. y lives in "Ad_k" and
// the step runs on it in place, so that x (the primary field) only ever holds iterates.
void runSlowCG(MethodRun& m) {
  Field& y = m.productField("Ad_k");
  const int restartMinIter = m.ctx.keywords ? m.ctx.keywords->restartMinIter() : 5;
  static_cast<FFTImage&>(m.x) = 0.0;
  static_cast<FFTImage&>(y) = 0.0;
  m.x.isInFourierSpace = false;
  y.isInFourierSpace = false;
  m.x.stateMark = 0;
  // The start field is zero: the criteria have no scale from it.
  m.startCriteria(0.0);
  const std::uint64_t nc = m.x.nComponents;
  double* xd = m.x.data();
  double* yd = y.data();
  const FieldProduct& energy = m.energy;
  int k = 0;
  double last = 0.0;
  for (int n = 0; n < m.settings.maxIter; ++n) {
    m.beginIteration(n);
    ++k;
    const StepSums sums = y.step(m.kind, m.ctx, m.load);
    ++m.counters.matrixVectorProducts;
    // y now holds t = x_{k+1}, x still x_k.
    const double now = voxelPass<1>(y, [&](std::uint64_t o, std::array<double, 1>& s) {
      double d[FieldProduct::kMaxValues];
      for (std::uint64_t c = 0; c < nc; ++c) d[c] = xd[o + c] - yd[o + c];
      s[0] += energy.norm2(d);
    })[0];
    double momentum = 0.0;
    if (k < restartMinIter || last <= now)
      momentum = static_cast<double>(k - 1) / static_cast<double>(k + 2);
    else
      k = 0;
    voxelPass<0>(y, [&](std::uint64_t o, std::array<double, 0>&) {
      for (std::uint64_t c = 0; c < nc; ++c) {
        const double previous = xd[o + c];
        const double t = yd[o + c];
        xd[o + c] = t;
        yd[o + c] = t + momentum * (t - previous);
      }
    });
    last = now;
    // The step measured the norm of the field it produced: that is the new x.
    if (m.endIteration(n, sums.fieldNormSquared)) break;
  }
}

// BiCGSTAB with the shadow residual r0 held fixed, started at x = b. The new directions p
// and s are formed in the voxel loops of their products; besides them an iteration passes
// over the fields three times: A p with its dot product (A p is kept for s and the next p),
// the two sums of A s, and the update of x and r with theirs.
void runBiCGSTAB(MethodRun& m) {
  Field& s = m.field("s_k");
  Field& r = m.field("r_k");
  Field& p = m.field("p_k");
  Field& ap = m.productField("Ap_k");
  Field& as = m.productField("As_k");
  Field& r0 = m.field("r_0");
  SystemOperator op = m.systemOperator();
  m.startCriteria(op.start().fieldNormSquared);
  op.startResidual(ap);
  const std::uint64_t nc = m.x.nComponents;
  double* xd = m.x.data();
  const double* sd = s.data();
  double* rd = r.data();
  const double* pd = p.data();
  const double* apd = ap.data();
  double* r0d = r0.data();
  const FieldProduct& energy = m.energy;
  const FieldProduct& tensor = m.tensor;
  const std::uint64_t length = rowLength(ap);
  // r := r0 := L(b), the residual of x = b; the first direction, r, is formed in the first
  // product.
  double rho = voxelPass<1>(ap, [&](std::uint64_t o, std::array<double, 1>& sum) {
    for (std::uint64_t c = 0; c < nc; ++c) rd[o + c] = r0d[o + c] = apd[o + c];
    sum[0] += energy.norm2(rd + o);
  })[0];
  double beta = 0.0;
  double omega = 0.0;
  for (int n = 0; n < m.settings.maxIter; ++n) {
    m.beginIteration(n);
    // p := r + beta (p - omega A p).
    StepInput direction;
    direction.add(1.0, r);
    if (n > 0) direction.add(beta, p).add(-beta * omega, ap);
    op.step(ap, direction.storedIn(p));
    const double d = op.productRows<1, true>(p, 1.0, ap, [&](std::uint64_t o, const double* apv,
                                                             std::array<double, 1>& sum) {
      sum[0] += energy.row(apv, r0d + o);
    })[0];
    if (std::abs(d) < kBiCGSTABStall) {
      m.stalled(true, "the direction's product vanished");
      break;
    }
    const double alpha = rho / d;
    op.step(as, StepInput().add(1.0, r).add(-alpha, ap).storedIn(s));
    const auto st = op.productRows<2>(s, 1.0, as, [&](std::uint64_t o, const double* asv,
                                                     std::array<double, 2>& sum) {
      sum[0] += energy.row(asv, sd + o);
      sum[1] += energy.rowNorm2(asv);
    });
    // s = 0: x + alpha p solves the system and the stabilising half-step has nothing to do.
    omega = st[1] > 0.0 ? st[0] / st[1] : 0.0;
    const auto sums = op.productRows<2>(s, 1.0, as, [&](std::uint64_t o, const double* asv,
                                                       std::array<double, 2>& sum) {
      double* xRow = xd + o;
      double* rRow = rd + o;
      const double* pRow = pd + o;
      const double* sRow = sd + o;
#pragma omp simd
      for (std::uint64_t i = 0; i < length; ++i) {
        xRow[i] += alpha * pRow[i] + omega * sRow[i];
        rRow[i] = sRow[i] - omega * asv[i];
      }
      sum[0] += energy.row(rRow, r0d + o);
      sum[1] += tensor.rowNorm2(xRow);
    });
    if (m.endIteration(n, sums[1])) break;
    if (omega == 0.0 || rho == 0.0) {
      m.stalled(false, "the stabilising step vanished");
      break;
    }
    beta = (alpha / omega) * sums[0] / rho;
    rho = sums[0];
  }
}

// MINRES on direction pairs (p, s = A p), s orthogonal in the energy product and scaled to
// |s| = 1, so that the products are of order one and the stall threshold is a relative one.
// A new pair is generated from the residual, p = r / |r|, s = A p, orthogonalised against
// the last two pairs (the conjugate-residual form), not from the last s as in the Lanczos
// form (p = s_old, s = A s_old). For a self-adjoint map both give the same iterates. On grids
// with an even number of voxels along an axis the "Basic" operator's Nyquist modes leave the
// map slightly non-self-adjoint but positive definite: the residual form still lowers the
// residual in every iteration, while the Lanczos form lost orthogonality, stagnated and then
// diverged (sphere composites of 10^3 to 32^3 voxels, contrasts 10 to 1000). The three pairs
// rotate through their fields instead of being copied.
void runMINRES(MethodRun& m) {
  Field& r = m.field("r_k");
  Field* ps[3] = {&m.field("p_k"), &m.field("p_k_old"), &m.field("p_k_oldest")};
  Field* ss[3] = {&m.productField("s_k"), &m.productField("s_k_old"),
                  &m.productField("s_k_oldest")};
  // The pair that plays the oldest one in the first iteration enters only with factor 0:
  // it must hold numbers, not leftovers of earlier solves.
  static_cast<FFTImage&>(*ps[1]) = 0.0;
  static_cast<FFTImage&>(*ss[1]) = 0.0;
  SystemOperator op = m.systemOperator();
  m.startCriteria(op.start().fieldNormSquared);
  const std::uint64_t nc = m.x.nComponents;
  const FieldProduct& energy = m.energy;
  const FieldProduct& tensor = m.tensor;
  double* xd = m.x.data();
  double* rd = r.data();
  // r := L(b), the residual of x = b, then the first pair p := r, s := A(p).
  op.startResidual(*ss[0]);
  copyValues(r, *ss[0]);
  op.step(*ss[0], StepInput().add(1.0, r).storedIn(*ps[0]));
  auto st = op.product<2, true>(*ps[0], 1.0, *ss[0], [&](std::uint64_t o, const double* sv,
                                                          std::array<double, 2>& s) {
    s[0] += energy.norm2(sv);
    s[1] += energy(rd + o, sv);
  });
  double sigma = st[0];
  double rho = st[1];
  if (sigma < kMinresStall) {
    m.stalled(false, "the start residual vanished");
    return;
  }
  for (int n = 0; n < m.settings.maxIter; ++n) {
    m.beginIteration(n);
    const double alpha = rho / sigma;
    const double scale = 1.0 / std::sqrt(sigma);
    // Update with the current pair and scale it.
    double* p0 = ps[0]->data();
    double* s0 = ss[0]->data();
    const auto sums = voxelPass<2>(m.x, [&](std::uint64_t o, std::array<double, 2>& s) {
      for (std::uint64_t c = 0; c < nc; ++c) {
        xd[o + c] += alpha * p0[o + c];
        rd[o + c] -= alpha * s0[o + c];
        p0[o + c] *= scale;
        s0[o + c] *= scale;
      }
      s[0] += tensor.norm2(xd + o);
      s[1] += energy.norm2(rd + o);
    });
    // Roles move on: the scaled pair becomes the old one, the old one the oldest.
    std::swap(ps[2], ps[1]);
    std::swap(ps[1], ps[0]);
    std::swap(ss[2], ss[1]);
    std::swap(ss[1], ss[0]);
    if (m.endIteration(n, sums[0])) break;
    if (!(sums[1] > 0.0)) {
      m.stalled(false, "the residual vanished");
      break;
    }
    const double unit = 1.0 / std::sqrt(sums[1]);
    const bool hasOldest = n >= 1;
    double* sNew = ss[0]->data();
    const double* s1 = ss[1]->data();
    const double* s2 = ss[2]->data();
    // s := A(r / |r|), orthogonalised below against the last two pairs.
    op.step(*ss[0], StepInput().add(unit, r));
    const auto dots = op.product<3, true>(r, unit, *ss[0], [&](std::uint64_t o, const double* sv,
                                                               std::array<double, 3>& s) {
      s[0] += energy(sv, s1 + o);
      s[1] += energy(sv, s2 + o);
      s[2] += energy(s1 + o, s2 + o);
    });
    const double beta1 = dots[0];
    const double beta2 = hasOldest ? dots[1] - beta1 * dots[2] : 0.0;
    double* pNew = ps[0]->data();
    const double* p1 = ps[1]->data();
    const double* p2 = ps[2]->data();
    st = voxelPass<2>(m.x, [&](std::uint64_t o, std::array<double, 2>& s) {
      for (std::uint64_t c = 0; c < nc; ++c) {
        sNew[o + c] -= beta1 * s1[o + c] + beta2 * s2[o + c];
        pNew[o + c] = unit * rd[o + c] - beta1 * p1[o + c] - beta2 * p2[o + c];
      }
      s[0] += energy.norm2(sNew + o);
      s[1] += energy(rd + o, sNew + o);
    });
    sigma = st[0];
    rho = st[1];
    if (sigma < kMinresStall) {
      m.stalled(false, "no new direction");
      break;
    }
  }
}

// LSQR (Golub-Kahan bidiagonalisation with Givens rotations), the adjoint being A itself in
// the energy product. Two products per iteration, both run in Auv_k and both with their
// input scaled in the step's voxel loop; the products themselves are never stored.
void runLSQR(MethodRun& m) {
  Field& u = m.field("u_k");
  Field& v = m.field("v_k");
  Field& w = m.field("w_k");
  Field& q = m.productField("Auv_k");
  SystemOperator op = m.systemOperator();
  m.startCriteria(op.start().fieldNormSquared);
  op.startResidual(q);
  const std::uint64_t nc = m.x.nComponents;
  const FieldProduct& energy = m.energy;
  const FieldProduct& tensor = m.tensor;
  double* xd = m.x.data();
  double* ud = u.data();
  double* vd = v.data();
  double* wd = w.data();
  const double beta0 = std::sqrt(norm2(q, energy));
  if (beta0 * beta0 < kCGStall) {
    m.stalled(false, "the start residual vanished");
    return;
  }
  // u := r0 / beta0 and A u; v := w := A u / alpha0.
  op.step(q, StepInput().add(1.0 / beta0, q).storedIn(u));
  const double alpha0 = std::sqrt(op.product<1>(u, 1.0, q, [&](std::uint64_t, const double* au,
                                                               std::array<double, 1>& s) {
    s[0] += energy.norm2(au);
  })[0]);
  if (alpha0 == 0.0) {
    m.stalled(false, "the start residual vanished");
    return;
  }
  op.product<0>(u, 1.0, q, [&](std::uint64_t o, const double* au, std::array<double, 0>&) {
    for (std::uint64_t c = 0; c < nc; ++c) wd[o + c] = vd[o + c] = au[c] / alpha0;
  });
  double alpha = alpha0;
  double phibar = beta0;
  double rhobar = alpha0;
  for (int n = 0; n < m.settings.maxIter; ++n) {
    m.beginIteration(n);
    // beta u := A v - alpha u.
    op.step(q, StepInput().add(1.0, v));
    const auto bu = op.product<2>(v, 1.0, q, [&](std::uint64_t o, const double* av,
                                                std::array<double, 2>& s) {
      for (std::uint64_t c = 0; c < nc; ++c) ud[o + c] = av[c] - alpha * ud[o + c];
      s[0] += energy.norm2(ud + o);
      s[1] += energy.norm2(av);
    });
    const bool uEnds = bu[0] <= kLsqrBreakdown * bu[1];
    const double beta = uEnds ? 0.0 : std::sqrt(bu[0]);
    alpha = 0.0;
    if (!uEnds) {
      // alpha v := A u - beta v, u normalised in the product's voxel loop.
      op.step(q, StepInput().add(1.0 / beta, u).storedIn(u));
      const auto av = op.product<2>(u, 1.0, q, [&](std::uint64_t o, const double* au,
                                                  std::array<double, 2>& s) {
        for (std::uint64_t c = 0; c < nc; ++c) vd[o + c] = au[c] - beta * vd[o + c];
        s[0] += energy.norm2(vd + o);
        s[1] += energy.norm2(au);
      });
      if (av[0] > kLsqrBreakdown * av[1]) alpha = std::sqrt(av[0]);
    }
    // The rotation that eliminates beta from the bidiagonal.
    const double rho = std::hypot(rhobar, beta);
    const double cs = rhobar / rho;
    const double sn = beta / rho;
    const double theta = sn * alpha;
    rhobar = -cs * alpha;
    const double phi = cs * phibar;
    phibar = sn * phibar;
    const double step = phi / rho;
    const double wFactor = theta / rho;
    const double inverseAlpha = alpha > 0.0 ? 1.0 / alpha : 0.0;
    const double xx = voxelPass<1>(m.x, [&](std::uint64_t o, std::array<double, 1>& s) {
      for (std::uint64_t c = 0; c < nc; ++c) {
        xd[o + c] += step * wd[o + c];
        vd[o + c] *= inverseAlpha;
        wd[o + c] = vd[o + c] - wFactor * wd[o + c];
      }
      s[0] += tensor.norm2(xd + o);
    })[0];
    if (m.endIteration(n, xx)) break;
    if (alpha == 0.0) {
      m.stalled(false, "the Krylov space is exhausted");
      break;
    }
  }
}

using MethodLoop = void (*)(MethodRun&);

const std::map<std::string, MethodLoop>& methodLoops() {
  static const std::map<std::string, MethodLoop> table = {{"CG", runCG},
                                                          {"slowCG", runSlowCG},
                                                          {"BiCGSTAB", runBiCGSTAB},
                                                          {"MINRES", runMINRES},
                                                          {"LSQR", runLSQR}};
  return table;
}

}  // namespace

NeumannResult solveWithMethod(const std::string& method, SolverFields& fields,
                              const StepContext& ctx, const MacroscopicLoad& load,
                              const MethodOptions& options, const ConvergenceSettings& settings,
                              SolverCounters& counters, std::ostream& out, std::ostream& err) {
  Field& x = *fields.deltaE;
  NeumannResult result;
  if (method == "NeumannSeries") {
    result = solveNeumannSeries(x, ctx, load, options, settings, counters, out, err);
  } else {
    const auto loop = methodLoops().find(method);
    if (loop == methodLoops().end()) fatal("Unknown iterative method " + method);
    MethodRun run(method, fields, ctx, load, options, settings, counters, out, err);
    loop->second(run);
    result = run.finish();
  }
  if (options.calculateResiduum) {
    // Any work field will do once the solve is over; the Neumann series has its own.
    Field* scratch = nullptr;
    for (auto& [name, f] : fields.methodFields)
      if (f && f.get() != &x) {
        scratch = f.get();
        break;
      }
    if (!scratch) fatal("input/Solution/CalculateResiduum needs a work field of the solution's shape");
    if (!scratch->plansCreated)
      scratch->createPlans(ctx.keywords ? ctx.keywords->plannerFlag() : "Estimate");
    // A measurement of the result, not a product of the method: not counted.
    const double value = relativeResiduum(x, *scratch, stepKindOf(options.routineSet), ctx, load);
    out << "relative Residuum = " << value << "\n" << std::flush;
  }
  return result;
}

double relativeResiduum(ElasticityHyperelasticityImage& x, ElasticityHyperelasticityImage& scratch,
                        StepKind kind, const StepContext& ctx, const MacroscopicLoad& load) {
  // x - T(x) is the equilibrium defect of x in strain units (Gamma0 of the stress
  // divergence's source), so measured in the field's norm it compares directly with x.
  scratch.step(kind, ctx, load, StepInput().add(1.0, x));
  const FieldProduct tensor = FieldProduct::tensor(x);
  const std::uint64_t nc = x.nComponents;
  const double* xd = x.data();
  const double* td = scratch.data();
  const auto sums = voxelPass<2>(x, [&](std::uint64_t o, std::array<double, 2>& s) {
    double d[FieldProduct::kMaxValues];
    for (std::uint64_t c = 0; c < nc; ++c) d[c] = xd[o + c] - td[o + c];
    s[0] += tensor.norm2(d);
    s[1] += tensor.norm2(xd + o);
  });
  return sums[1] > 0.0 ? std::sqrt(sums[0] / sums[1]) : std::sqrt(sums[0]);
}

}  // namespace gridmoor
