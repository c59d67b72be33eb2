// The JSON documents for the map page: valid JSON with the keys and values the page reads.
#include "ui/MapMessages.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

#include <limits>

namespace {
QJsonDocument parse(const QString& text) {
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8(), &error);
    EXPECT_EQ(error.error, QJsonParseError::NoError) << error.errorString().toStdString() << " in " << text.toStdString();
    return document;
}
} // namespace

TEST(MapMessages, track_carries_centimetre_coordinates_whole_seconds_and_speed_or_null) {
    TrackPosition first;
    first.time = trackTimeFromSeconds(1'700'000'000);
    first.longitude = -0.12775829999999999;
    first.latitude = 51.507350600000001;
    TrackPosition second = first;
    second.time += 10'000'000;
    second.speed = 13.333333015441895;
    const QJsonArray positions = parse(trackDocument({first, second})).object().value("positions").toArray();
    ASSERT_EQ(positions.size(), 2);
    const QJsonObject point = positions.at(0).toObject();
    EXPECT_EQ(point.value("coordinates").toObject().value("longitude").toDouble(), -0.1277583);
    EXPECT_EQ(point.value("coordinates").toObject().value("latitude").toDouble(), 51.5073506);
    EXPECT_EQ(point.value("captured").toVariant().toLongLong(), 1'700'000'000);
    EXPECT_TRUE(point.value("speed").isNull());
    EXPECT_EQ(static_cast<float>(positions.at(1).toObject().value("speed").toDouble()), 13.333333015441895f);
    EXPECT_EQ(positions.at(1).toObject().value("captured").toVariant().toLongLong(), 1'700'000'001);
}

TEST(MapMessages, degrees_keep_their_sign_and_whole_values_stay_short) {
    TrackPosition position;
    position.longitude = -0.00000004; // rounds to zero
    position.latitude = 50.0;
    TrackPosition west = position;
    west.longitude = -179.9999999;
    west.latitude = -0.5;
    const QString text = trackDocument({position, west});
    EXPECT_TRUE(text.contains(QStringLiteral("{\"longitude\":0,\"latitude\":50}"))) << text.toStdString();
    EXPECT_TRUE(text.contains(QStringLiteral("{\"longitude\":-179.9999999,\"latitude\":-0.5}"))) << text.toStdString();
    parse(text);
}

TEST(MapMessages, an_empty_track_and_no_marks_are_still_documents) {
    EXPECT_TRUE(parse(trackDocument({})).object().value("positions").toArray().isEmpty());
    EXPECT_TRUE(parse(timeMarksDocument({})).array().isEmpty());
}

TEST(MapMessages, marks_carry_angle_and_time_and_no_number_json_cannot_hold) {
    const std::vector<MapPoint> marks{{1'700'000'030.0, 14.5, 50.1, 90.0},
                                      {1'700'000'060.0, std::numeric_limits<double>::quiet_NaN(), 50.2, std::nullopt}};
    const QJsonArray array = parse(timeMarksDocument(marks)).array();
    ASSERT_EQ(array.size(), 2);
    EXPECT_EQ(array.at(0).toObject().value("angle").toDouble(), 90.0);
    EXPECT_EQ(array.at(0).toObject().value("captured").toDouble(), 1'700'000'030.0);
    EXPECT_EQ(array.at(0).toObject().value("coordinates").toObject().value("longitude").toDouble(), 14.5);
    EXPECT_TRUE(array.at(1).toObject().value("coordinates").toObject().value("longitude").isNull());
    EXPECT_EQ(array.at(1).toObject().value("angle").toDouble(), 0.0);
}
