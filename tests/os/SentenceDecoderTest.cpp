// Decoding whole sentences: every recognised type into its record, has-value flags, and addresses.
#include "os/nmea/SentenceDecoder.h"

#include "support/NmeaSentences.h"

#include <gtest/gtest.h>

#include <string>

using namespace os::nmea;
using testsupport::sentence;

namespace {

// Keeps the last record of each type and the order of the calls.
class RecordingHandler : public ISentenceHandler {
public:
    std::string calls;
    GgaSentence gga;
    GllSentence gll;
    GsaSentence gsa;
    GstSentence gst;
    GsvSentence gsv;
    RmcSentence rmc;
    VtgSentence vtg;
    HdgSentence hdg;
    ZdaSentence zda;
    DptSentence dpt;
    DbtSentence dbt;
    MtwSentence mtw;
    PgrmzSentence pgrmz;
    std::string unknownType;

    void onGga(const GgaSentence& s) override { gga = s; calls += "GGA "; }
    void onGll(const GllSentence& s) override { gll = s; calls += "GLL "; }
    void onGsa(const GsaSentence& s) override { gsa = s; calls += "GSA "; }
    void onGst(const GstSentence& s) override { gst = s; calls += "GST "; }
    void onGsv(const GsvSentence& s) override { gsv = s; calls += "GSV "; }
    void onRmc(const RmcSentence& s) override { rmc = s; calls += "RMC "; }
    void onVtg(const VtgSentence& s) override { vtg = s; calls += "VTG "; }
    void onHdg(const HdgSentence& s) override { hdg = s; calls += "HDG "; }
    void onZda(const ZdaSentence& s) override { zda = s; calls += "ZDA "; }
    void onDpt(const DptSentence& s) override { dpt = s; calls += "DPT "; }
    void onDbt(const DbtSentence& s) override { dbt = s; calls += "DBT "; }
    void onMtw(const MtwSentence& s) override { mtw = s; calls += "MTW "; }
    void onUnknown(const SentenceAddress& a) override { unknownType = std::string(a.type); calls += "? "; }
    void onPgrmz(const PgrmzSentence& s) override { pgrmz = s; calls += "PGRMZ "; }
};

RecordingHandler decode(const std::string& body) {
    RecordingHandler handler;
    decodeSentence(sentence(body), handler);
    return handler;
}

} // namespace

TEST(SentenceDecoder, rmc_all_fields) {
    const auto h = decode("GPRMC,120005.90,A,4916.45,N,12311.12,W,10.5,54.7,191124,020.3,E,D");
    ASSERT_EQ(h.calls, "RMC ");
    EXPECT_EQ(h.rmc.utc->hours, 12);
    EXPECT_FLOAT_EQ(h.rmc.utc->seconds, 5.9f);
    EXPECT_EQ(h.rmc.status, Status::Valid);
    EXPECT_DOUBLE_EQ(*h.rmc.latitude, 49 + 16.45 / 60);
    EXPECT_DOUBLE_EQ(*h.rmc.longitude, -(123 + 11.12 / 60));
    EXPECT_DOUBLE_EQ(*h.rmc.speedKnots, 10.5);
    EXPECT_DOUBLE_EQ(*h.rmc.courseTrue, 54.7);
    EXPECT_EQ(h.rmc.date->day, 19);
    EXPECT_DOUBLE_EQ(*h.rmc.magneticVariation, 20.3);
    EXPECT_EQ(h.rmc.mode, Mode::Differential);
}

TEST(SentenceDecoder, empty_and_invalid_fields_leave_the_flag_clear) {
    const auto h = decode("GPRMC,,X,4916.45,Q,12311.12,W,,abc,321324,,,Z");
    ASSERT_EQ(h.calls, "RMC ");
    EXPECT_FALSE(h.rmc.utc);
    EXPECT_FALSE(h.rmc.status);
    EXPECT_FALSE(h.rmc.latitude);
    EXPECT_TRUE(h.rmc.longitude);
    EXPECT_FALSE(h.rmc.speedKnots);
    EXPECT_FALSE(h.rmc.courseTrue);
    EXPECT_FALSE(h.rmc.date);
    EXPECT_FALSE(h.rmc.magneticVariation);
    EXPECT_FALSE(h.rmc.mode);
    // A short sentence: the missing fields read as empty.
    const auto shortRmc = decode("GPRMC,120005");
    EXPECT_TRUE(shortRmc.rmc.utc);
    EXPECT_FALSE(shortRmc.rmc.date);
}

TEST(SentenceDecoder, position_and_quality_sentences) {
    auto h = decode("GNGGA,120005,4916.45,N,12311.12,W,2,08,0.9,545.4,M,46.9,M,3.5,0120");
    EXPECT_EQ(*h.gga.quality, 2u);
    EXPECT_EQ(*h.gga.satellitesInUse, 8u);
    EXPECT_DOUBLE_EQ(*h.gga.hdop, 0.9);
    EXPECT_DOUBLE_EQ(*h.gga.altitude, 545.4);
    EXPECT_EQ(h.gga.altitudeUnit, Unit::Metres);
    EXPECT_DOUBLE_EQ(*h.gga.geoidSeparation, 46.9);
    EXPECT_EQ(*h.gga.dgpsStation, 120u);
    h = decode("GPGLL,4916.45,N,12311.12,W,225444,A,A");
    EXPECT_EQ(h.gll.status, Status::Valid);
    EXPECT_EQ(h.gll.utc->hours, 22);
    EXPECT_DOUBLE_EQ(*h.gll.latitude, 49 + 16.45 / 60);
    h = decode("GPGSA,A,3,04,05,,09,12,,,24,,,,,2.5,1.3,2.1");
    EXPECT_EQ(h.gsa.selectionMode, 'A');
    EXPECT_EQ(*h.gsa.fixMode, 3u);
    EXPECT_EQ(*h.gsa.satellites[0], 4u);
    EXPECT_FALSE(h.gsa.satellites[2]);
    EXPECT_EQ(*h.gsa.satellites[7], 24u);
    EXPECT_DOUBLE_EQ(*h.gsa.pdop, 2.5);
    EXPECT_DOUBLE_EQ(*h.gsa.hdop, 1.3);
    EXPECT_DOUBLE_EQ(*h.gsa.vdop, 2.1);
    h = decode("GPGST,024603.00,3.2,6.6,4.7,47.3,5.8,5.6,22.0");
    EXPECT_EQ(h.gst.utc->minutes, 46);
    EXPECT_DOUBLE_EQ(*h.gst.orientation, 47.3);
    EXPECT_DOUBLE_EQ(*h.gst.altitudeError, 22.0);
    h = decode("GPGSV,3,3,11,22,42,067,42,24,14,311,43,27,05,244,00");
    EXPECT_EQ(*h.gsv.messageCount, 3u);
    EXPECT_EQ(*h.gsv.satellitesInView, 11u);
    EXPECT_EQ(*h.gsv.satellites[1].azimuth, 311u);
    EXPECT_EQ(*h.gsv.satellites[2].snr, 0u);
    EXPECT_FALSE(h.gsv.satellites[3].prn); // only three satellites in the last sentence
}

TEST(SentenceDecoder, motion_date_and_other_sensors) {
    auto h = decode("GPVTG,054.7,T,034.4,M,005.5,N,010.2,K,A");
    EXPECT_DOUBLE_EQ(*h.vtg.courseTrue, 54.7);
    EXPECT_DOUBLE_EQ(*h.vtg.courseMagnetic, 34.4);
    EXPECT_DOUBLE_EQ(*h.vtg.speedKnots, 5.5);
    EXPECT_DOUBLE_EQ(*h.vtg.speedKmh, 10.2);
    h = decode("GPVTG,054.7,X,,M,005.5,N,010.2,N"); // wrong unit letters void their values
    EXPECT_FALSE(h.vtg.courseTrue);
    EXPECT_FALSE(h.vtg.speedKmh);
    h = decode("GPZDA,201530.00,04,07,2002,-05,00");
    EXPECT_EQ(*h.zda.day, 4u);
    EXPECT_EQ(*h.zda.month, 7u);
    EXPECT_EQ(*h.zda.year, 2002u);
    EXPECT_EQ(*h.zda.zoneHours, -5);
    h = decode("GPZDA,201530.00,,13,02,,");
    EXPECT_FALSE(h.zda.day);
    EXPECT_FALSE(h.zda.month); // 13 is no month
    EXPECT_FALSE(h.zda.year);  // a year has four digits
    h = decode("HCHDG,98.3,0.5,W,12.6,E");
    EXPECT_DOUBLE_EQ(*h.hdg.heading, 98.3);
    EXPECT_DOUBLE_EQ(*h.hdg.deviation, -0.5);
    EXPECT_DOUBLE_EQ(*h.hdg.variation, 12.6);
    h = decode("SDDPT,2.4,-0.5,100");
    EXPECT_DOUBLE_EQ(*h.dpt.offset, -0.5);
    h = decode("SDDBT,7.8,f,2.4,M,1.3,F");
    EXPECT_DOUBLE_EQ(*h.dbt.depthFeet, 7.8);
    EXPECT_DOUBLE_EQ(*h.dbt.depthMetres, 2.4);
    EXPECT_DOUBLE_EQ(*h.dbt.depthFathoms, 1.3);
    h = decode("YXMTW,17.5,C");
    EXPECT_DOUBLE_EQ(*h.mtw.temperature, 17.5);
    h = decode("PGRMZ,2282,f,3");
    ASSERT_EQ(h.calls, "PGRMZ ");
    EXPECT_DOUBLE_EQ(*h.pgrmz.altitude, 2282);
    EXPECT_EQ(h.pgrmz.unit, Unit::Feet);
}

TEST(SentenceDecoder, unknown_and_malformed_addresses_go_to_on_unknown) {
    EXPECT_EQ(decode("GPXTE,A,A,0.67,L,N").calls, "? ");
    EXPECT_EQ(decode("GPXTE,A,A,0.67,L,N").unknownType, "XTE");
    EXPECT_EQ(decode("PGRME,15.0,M").calls, "? "); // Garmin, but not the altitude sentence
    EXPECT_EQ(decode("ADPMB,5,0").calls, "? ");
    EXPECT_EQ(decode("gprmc,120005").calls, "? "); // addresses are upper case
    EXPECT_EQ(decode("").calls, "? ");
    EXPECT_EQ(decode("GPRMCX,120005").calls, "? ");
}

TEST(SentenceDecoder, descriptors_select_by_address) {
    SentenceAddress address;
    ASSERT_TRUE(parseAddress("GNRMC", address));
    EXPECT_EQ(address.talker, "GN");
    EXPECT_EQ(address.type, "RMC");
    ASSERT_NE(findDescriptor(address), nullptr);
    EXPECT_EQ(findDescriptor(address)->kind, SentenceKind::Rmc);
    ASSERT_TRUE(parseAddress("PGRMZ", address));
    EXPECT_EQ(address.manufacturer, "GRM");
    EXPECT_EQ(address.type, "Z");
    EXPECT_EQ(findDescriptor(address)->kind, SentenceKind::Pgrmz);
    SentenceDescriptor onlyGps{SentenceKind::Rmc, 0, "GP", "RMC", {}, false};
    ASSERT_TRUE(parseAddress("GPRMC", address));
    EXPECT_TRUE(onlyGps.matches(address));
    ASSERT_TRUE(parseAddress("GLRMC", address));
    EXPECT_FALSE(onlyGps.matches(address));
}
