// The map's starting centre: the capital of the user's country, Moscow when the country is unknown.
#include "ui/NationCapitals.h"

#include <gtest/gtest.h>

TEST(NationCapitals, the_interface_languages_countries_have_their_own_capitals) {
    EXPECT_NEAR(capitalOf(QLocale::Poland).latitude, 52.23, 0.01);
    EXPECT_NEAR(capitalOf(QLocale::CzechRepublic).longitude, 14.44, 0.01);
    EXPECT_NEAR(capitalOf(QLocale::UnitedKingdom).longitude, -0.13, 0.01);
    EXPECT_NEAR(capitalOf(QLocale::UnitedStates).longitude, -77.04, 0.01);
    EXPECT_NEAR(capitalOf(QLocale::Brazil).latitude, -15.8, 0.01);
}

TEST(NationCapitals, an_unknown_country_starts_at_moscow) {
    const Capital moscow = capitalOf(QLocale::Russia);
    EXPECT_NEAR(moscow.latitude, 55.76, 0.01);
    EXPECT_NEAR(moscow.longitude, 37.62, 0.01);
    EXPECT_EQ(capitalOf(QLocale::Antarctica).latitude, moscow.latitude);
    EXPECT_EQ(capitalOf(QLocale::AnyCountry).longitude, moscow.longitude);
}
