#include "host/GridConfig.h"

#include <fmt/core.h>

#include <QJsonArray>
#include <algorithm>

#include "host/InputError.h"
#include "shared/TextCodec.h"

namespace orvane {
namespace {

std::string requiredDecimal(JsonReader& reader, const char* key) {
  if (!reader.has(key)) throw InputError(fmt::format("{}: is missing", reader.place(key)));
  return reader.decimal(key);
}

GridOptions readGrid(const QJsonValue& json, const std::string& place) {
  JsonReader reader(json, place);
  GridOptions grid;
  grid.name = utf8ToGbk(reader.filledText("name"));
  grid.account = utf8ToGbk(reader.filledText("account"));
  grid.code = utf8ToGbk(reader.requiredText("code"));
  grid.lower = requiredDecimal(reader, "lower");
  grid.upper = requiredDecimal(reader, "upper");
  grid.step = requiredDecimal(reader, "step");
  grid.volume = requiredDecimal(reader, "volume");
  reader.close();
  return grid;
}

}  // namespace

void readGrids(JsonReader& reader, RunPlan& plan) {
  const QJsonValue found = reader.value("grids");
  if (found.isUndefined()) return;
  if (!found.isArray()) reader.refuse("grids", "must be an array");
  plan.places["grids"] = reader.place("grids");
  const QJsonArray list = found.toArray();
  for (qsizetype i = 0; i < list.size(); ++i)
    plan.trade.grids.push_back(readGrid(list[i], fmt::format("{}[{}]", reader.place("grids"), i)));
}

void completeGrids(RunPlan& plan, const std::string& place) {
  for (std::size_t i = 0; i < plan.trade.grids.size(); ++i) {
    GridOptions& grid = plan.trade.grids[i];
    const std::string here = fmt::format("{}: grids[{}].account", place, i);
    if (grid.account.empty()) {
      if (plan.runners.size() != 1)
        throw InputError(here + ": is missing; with several runners a grid must name one");
      grid.account = utf8ToGbk(plan.runners[0].account);
    }
    const auto isIts = [&grid](const AccountSpec& account) { return account.name == grid.account; };
    if (std::ranges::none_of(plan.trade.accounts, isIts))
      throw InputError(
          fmt::format("{}: there is no account \"{}\"", here, gbkToUtf8(grid.account)));
  }
}

}  // namespace orvane
