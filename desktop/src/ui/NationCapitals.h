// Capital coordinates by country: the map opens centred on the capital of the user's country.
#pragma once

#include <QLocale>

struct Capital {
    double latitude = 0.0;
    double longitude = 0.0;
};

// The capital of a country; a country missing from the table gets Moscow (Russia's entry).
Capital capitalOf(QLocale::Country country);

// The capital of the user's country, the territory of the system locale.
Capital capitalOfUserCountry();
