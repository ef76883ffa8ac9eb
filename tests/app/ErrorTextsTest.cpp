#include "app/ErrorTexts.h"

#include "core/ComError.h"
#include "core/LocalizedStrings.h"

#include <gtest/gtest.h>

TEST(ErrorTexts, AreThoseOfTheLoadedLanguage) {
    LoadLocalizedStrings(L"en");
    FillCustomErrorTexts();
    EXPECT_EQ(ComErrorText(_com_error(-100)), L"Failed to read installation resource. (0xffffff9c)");
    EXPECT_EQ(
        ComErrorText(_com_error(-99)),
        L"Failed to create temporary file. Make sure you have enough disk space and then click Retry. (0xffffff9d)");

    LoadLocalizedStrings(L"de");
    FillCustomErrorTexts();
    EXPECT_EQ(ComErrorText(_com_error(-100)), L"Fehler beim Lesen aus der Installationsressource. (0xffffff9c)");
    EXPECT_EQ(CustomErrorTexts.size(), 2U);
    CustomErrorTexts.clear();
}
