#include "host/ReportPage.h"

#include <QJsonDocument>
#include <QJsonObject>

#include "host/PageData.h"
#include "host/PageTemplate.h"

namespace orvane {
namespace {

/// JSON that cannot end the element in which it stands, nor begin another.
QByteArray embedded(const QJsonObject& object) {
  return QJsonDocument(object).toJson(QJsonDocument::Compact).replace('<', "\\u003c");
}

}  // namespace

QByteArray reportPage(const RunOutcome& outcome, const QJsonObject& report) {
  QByteArray page(kPageHead);
  page += embedded(pageData(outcome, report));
  page += kPageMiddle;
  page += embedded(report["timing"].toObject());
  page += kPageTail;
  return page;
}

}  // namespace orvane
