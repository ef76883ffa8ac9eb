#include "app/ErrorTexts.h"

#include "core/ComError.h"
#include "core/LocalizedStrings.h"

void FillCustomErrorTexts() {
    CustomErrorTexts[ErrorReadResource] = GetLocalizedString(StrReadResourceFailed);
    CustomErrorTexts[ErrorTempFile] = GetLocalizedString(StrTempFileFailed);
}
