// The fixed table of capitals: the interface languages' countries and the largest countries of each region.
#include "ui/NationCapitals.h"

#include <unordered_map>

namespace {

using CapitalTable = std::unordered_map<int, Capital>;

const CapitalTable& capitalTable() {
    static const CapitalTable table{
        // The interface languages' countries first.
        {QLocale::Russia, {55.7558, 37.6173}},         // Moscow
        {QLocale::Poland, {52.2297, 21.0122}},         // Warsaw
        {QLocale::CzechRepublic, {50.0755, 14.4378}},  // Prague
        {QLocale::UnitedKingdom, {51.5074, -0.1278}},  // London
        {QLocale::UnitedStates, {38.9072, -77.0369}},  // Washington
        // Europe
        {QLocale::Germany, {52.5200, 13.4050}},        // Berlin
        {QLocale::France, {48.8566, 2.3522}},          // Paris
        {QLocale::Italy, {41.9028, 12.4964}},          // Rome
        {QLocale::Spain, {40.4168, -3.7038}},          // Madrid
        {QLocale::Ukraine, {50.4501, 30.5234}},        // Kyiv
        {QLocale::Belarus, {53.9006, 27.5590}},        // Minsk
        {QLocale::Slovakia, {48.1486, 17.1077}},       // Bratislava
        {QLocale::Netherlands, {52.3676, 4.9041}},     // Amsterdam
        {QLocale::Belgium, {50.8503, 4.3517}},         // Brussels
        {QLocale::Sweden, {59.3293, 18.0686}},         // Stockholm
        {QLocale::Norway, {59.9139, 10.7522}},         // Oslo
        {QLocale::Finland, {60.1699, 24.9384}},        // Helsinki
        {QLocale::Denmark, {55.6761, 12.5683}},        // Copenhagen
        {QLocale::Austria, {48.2082, 16.3738}},        // Vienna
        {QLocale::Switzerland, {46.9480, 7.4474}},     // Bern
        {QLocale::Portugal, {38.7223, -9.1393}},       // Lisbon
        {QLocale::Greece, {37.9838, 23.7275}},         // Athens
        {QLocale::Romania, {44.4268, 26.1025}},        // Bucharest
        {QLocale::Hungary, {47.4979, 19.0402}},        // Budapest
        {QLocale::Bulgaria, {42.6977, 23.3219}},       // Sofia
        {QLocale::Serbia, {44.7866, 20.4489}},         // Belgrade
        {QLocale::Croatia, {45.8150, 15.9819}},        // Zagreb
        {QLocale::Ireland, {53.3498, -6.2603}},        // Dublin
        {QLocale::Lithuania, {54.6872, 25.2797}},      // Vilnius
        {QLocale::Latvia, {56.9496, 24.1052}},         // Riga
        {QLocale::Estonia, {59.4370, 24.7536}},        // Tallinn
        {QLocale::Moldova, {47.0105, 28.8638}},        // Chisinau
        // Asia
        {QLocale::Turkey, {39.9334, 32.8597}},         // Ankara
        {QLocale::Kazakhstan, {51.1694, 71.4491}},     // Astana
        {QLocale::China, {39.9042, 116.4074}},         // Beijing
        {QLocale::Japan, {35.6762, 139.6503}},         // Tokyo
        {QLocale::India, {28.6139, 77.2090}},          // New Delhi
        {QLocale::SouthKorea, {37.5665, 126.9780}},    // Seoul
        {QLocale::Indonesia, {-6.2088, 106.8456}},     // Jakarta
        {QLocale::Iran, {35.6892, 51.3890}},           // Tehran
        {QLocale::SaudiArabia, {24.7136, 46.6753}},    // Riyadh
        {QLocale::Pakistan, {33.6844, 73.0479}},       // Islamabad
        {QLocale::Mongolia, {47.8864, 106.9057}},      // Ulaanbaatar
        {QLocale::Uzbekistan, {41.2995, 69.2401}},     // Tashkent
        {QLocale::Thailand, {13.7563, 100.5018}},      // Bangkok
        {QLocale::Vietnam, {21.0278, 105.8342}},       // Hanoi
        {QLocale::Philippines, {14.5995, 120.9842}},   // Manila
        {QLocale::Israel, {31.7683, 35.2137}},         // Jerusalem
        {QLocale::UnitedArabEmirates, {24.4539, 54.3773}}, // Abu Dhabi
        {QLocale::Georgia, {41.7151, 44.8271}},        // Tbilisi
        {QLocale::Armenia, {40.1792, 44.4991}},        // Yerevan
        {QLocale::Azerbaijan, {40.4093, 49.8671}},     // Baku
        // The Americas
        {QLocale::Canada, {45.4215, -75.6972}},        // Ottawa
        {QLocale::Mexico, {19.4326, -99.1332}},        // Mexico City
        {QLocale::Brazil, {-15.7975, -47.8919}},       // Brasilia
        {QLocale::Argentina, {-34.6037, -58.3816}},    // Buenos Aires
        {QLocale::Chile, {-33.4489, -70.6693}},        // Santiago
        {QLocale::Colombia, {4.7110, -74.0721}},       // Bogota
        {QLocale::Peru, {-12.0464, -77.0428}},         // Lima
        {QLocale::Venezuela, {10.4806, -66.9036}},     // Caracas
        // Elsewhere
        {QLocale::Australia, {-35.2809, 149.1300}},    // Canberra
        {QLocale::Egypt, {30.0444, 31.2357}},          // Cairo
        {QLocale::SouthAfrica, {-25.7479, 28.2293}},   // Pretoria
    };
    return table;
}

} // namespace

Capital capitalOf(QLocale::Country country) {
    const CapitalTable& table = capitalTable();
    const auto found = table.find(country);
    return found != table.end() ? found->second : table.at(QLocale::Russia);
}

Capital capitalOfUserCountry() {
    return capitalOf(QLocale::system().country());
}
