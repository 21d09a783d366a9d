#include "tests/support/models.h"

namespace tarnwick {

LoadedModel::LoadedModel(const LinearModel& model, MatrixLayout layout) : obj(model.obj)
{
    for (const Row& row : model.rows) {
        rhs.push_back(row.rhs);
        sense.push_back(row.sense);
    }
    const bool dense = layout == MatrixLayout::dense;
    for (std::size_t j = 0; j < model.numcols(); ++j) {
        lb.push_back(model.lower(j));
        ub.push_back(model.upper(j));
        matbeg.push_back(static_cast<std::int32_t>(matval.size()));
        for (std::size_t i = 0; i < model.numrows(); ++i) {
            if (!dense && model.rows[i].a[j] == 0.0) continue;
            matind.push_back(static_cast<std::int32_t>(i));
            matval.push_back(model.rows[i].a[j]);
        }
        matcnt.push_back(static_cast<std::int32_t>(matval.size()) - matbeg.back());
    }
    const auto entries = static_cast<std::int32_t>(matval.size());
    matind.push_back(0);  // a matrix without any entry still has its arrays
    matval.push_back(0.0);

    lp = loadlp("model", static_cast<std::int32_t>(obj.size()),
                static_cast<std::int32_t>(rhs.size()), model.objsen, obj.data(), rhs.data(),
                sense.data(), dense ? nullptr : matbeg.data(), dense ? nullptr : matcnt.data(),
                dense ? nullptr : matind.data(), matval.data(), lb.data(), ub.data(), nullptr, 0, 0,
                entries);
    if (!lp || model.q.empty()) return;
    for (std::size_t j = 0; j < model.numcols(); ++j)
        for (const Reals& row : model.q) qmatval.push_back(row[j]);
    start = model.start;
    start.resize(model.numcols());
    loadquad(lp, nullptr, nullptr, nullptr, qmatval.data(),
             static_cast<std::int32_t>(qmatval.size()), start.data());
}

LoadedModel::~LoadedModel()
{
    if (lp) unloadprob(&lp);
}

namespace {

// The point that the bounds and rows are laid around, and the reduced costs that belong to it.
struct Plan {
    Reals x, reduced, dual;
};

void plan_column(Draw& draw, const RandomShape& shape, LinearModel& model, Plan& plan)
{
    const double size = shape.degenerate ? draw.whole(1, 4) : 1.0 + 9.0 * draw.unit();
    const double cost = shape.degenerate ? draw.whole(0, 3) : 5.0 * draw.unit();
    double lower = draw.with(0.3) ? -size : 0.0, upper = INF;
    double x = lower, reduced = cost;
    const double kind = draw.unit();
    if (kind < shape.free) {
        lower = -INF;
        x = draw.with(0.5) ? size : -size;
        reduced = 0.0;
    } else if (kind < shape.free + shape.fixed) {
        upper = lower;
        reduced = draw.with(0.5) ? cost : -cost;
    } else if (kind < shape.free + shape.fixed + shape.boxed) {
        upper = lower + size;
        if (draw.with(0.5)) {
            x = upper;
            reduced = -cost;
        }
    }
    if (lower < upper && draw.with(0.5)) {  // a basic variable
        if (lower > -INF) x = shape.degenerate ? lower : lower + 0.5 * size;
        reduced = 0.0;
    }
    model.lb.push_back(lower);
    model.ub.push_back(upper);
    plan.x.push_back(x);
    plan.reduced.push_back(reduced);
}

void plan_row(Draw& draw, const RandomShape& shape, LinearModel& model, Plan& plan)
{
    Row row{Reals(plan.x.size()), 'L', 0.0};
    for (std::size_t j = 0; j < plan.x.size(); ++j) {
        if (!draw.with(shape.density)) continue;
        row.a[j] = shape.degenerate ? draw.whole(0, 1) : 4.0 * draw.unit() - 2.0;
        row.rhs += row.a[j] * plan.x[j];
    }
    const double kind = draw.unit();
    const double price = shape.degenerate ? draw.whole(0, 3) : 3.0 * draw.unit();
    const double room = shape.degenerate ? draw.whole(0, 2) : 5.0 * draw.unit();
    const bool binding = draw.with(0.5);
    double dual = binding ? -price : 0.0;
    if (kind < shape.equal) {
        row.sense = 'E';
        dual = draw.with(0.5) ? price : -price;
    } else if (kind < shape.equal + shape.greater) {
        row.sense = 'G';
        dual = -dual;
        row.rhs -= binding ? 0.0 : room;
    } else {
        row.rhs += binding ? 0.0 : room;
    }
    plan.dual.push_back(dual);
    model.rows.push_back(row);
}

}  // namespace

LinearModel solvable_model(unsigned seed, const RandomShape& shape)
{
    Draw draw(seed);
    LinearModel model;
    Plan plan;
    for (int j = 0; j < shape.cols; ++j) plan_column(draw, shape, model, plan);
    for (int i = 0; i < shape.rows; ++i) plan_row(draw, shape, model, plan);

    model.objsen = draw.with(0.5) ? 1 : -1;
    model.obj = plan.reduced;
    for (std::size_t j = 0; j < model.obj.size(); ++j) {
        for (std::size_t i = 0; i < model.rows.size(); ++i)
            model.obj[j] += plan.dual[i] * model.rows[i].a[j];
        model.obj[j] *= model.objsen;
    }
    return model;
}

LinearModel tiny_model(unsigned seed)
{
    Draw draw(seed);
    const int rows = draw.whole(1, 4), cols = draw.whole(1, 4);
    LinearModel model;
    model.objsen = draw.with(0.5) ? 1 : -1;
    for (int j = 0; j < cols; ++j) {
        model.obj.push_back(draw.whole(-3, 3));
        const int kind = draw.whole(0, 5);
        const int low = draw.whole(-3, 3);
        model.lb.push_back(kind == 0 ? -INF : kind == 1 ? low : 0.0);
        model.ub.push_back(kind == 2 ? low + 3 : kind == 1 ? low + draw.whole(0, 4) : INF);
    }
    for (int i = 0; i < rows; ++i) {
        Row row{{}, "LLGE"[draw.whole(0, 3)], static_cast<double>(draw.whole(-4, 8))};
        for (int j = 0; j < cols; ++j) row.a.push_back(draw.whole(-3, 4));
        model.rows.push_back(row);
    }
    return model;
}

}  // namespace tarnwick
