// SPDX-License-Identifier: Apache-2.0
#include "collectors/support/ciminstance.h"
#include "collectors/support/corelog.h"
#include "plugin/spfirmwarevpd.h"
#include "smbios/firmwaredate.h"

using namespace NKRXVEL20;
using namespace collector;
using namespace spfirmwarevpd;

TVELStatusCode SPFirmwareVpd::doTime(InstanceHandle instance, std::string propertyName,
                                     std::string date, TCIMDateTime& value, bool noSet) {
  if (dateForm(date) == DateForm::kNone) return {kStatusSuccess};
  int status = kStatusSuccess;  // any other but 3 is passed on when the date is taken
  if (const auto parsed = parseFirmwareDate(date)) {
    status = fdrSetDateTime(&value, parsed->year, parsed->month, parsed->day, 0, 0, 0, 0, 0);
    if (status == kStatusFailure) {
      logFailure("Error Setting DateTime..");
      return {kStatusFailure};
    }
  }
  if (noSet) return {status};
  // Names BuildDate whatever the property, and stays so: people search their logs for it.
  const bool isSet =
      setProperty(instance, propertyName, TCIMValue(value), "Error adding BuildDate property");
  return {isSet ? status : kStatusFailure};
}
