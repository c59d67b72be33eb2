// The trip/parking state machine over GPS fixes, with its square reference boxes.
#include "core/TrackAnalyzer.h"

TrackAnalyzer::TrackAnalyzer(const Settings& settings, IEventHandler& handler)
    : m_settings(settings), m_handler(handler), m_state(settings.initialState == Parking ? Parking : Trip) {}

bool TrackAnalyzer::Box::contains(const TrackPosition& position) const {
    return position.latitude >= minLatitude && position.latitude <= maxLatitude &&
           position.longitude >= minLongitude && position.longitude <= maxLongitude;
}

void TrackAnalyzer::makeBox(const TrackPosition& centre, std::uint32_t radius) {
    const double half = metresToDegrees(radius);
    m_box = Box{centre.latitude - half, centre.latitude + half, centre.longitude - half, centre.longitude + half};
}

void TrackAnalyzer::feed(const TrackPosition& position) {
    if (m_settings.minSatellites != 0 &&
        (!position.satellites || *position.satellites < m_settings.minSatellites))
        return;
    if (m_last && position.time <= m_last->time)
        return;
    if (!m_last && !m_candidateFirst)
        m_candidateFirst = position;
    if (!m_box) {
        makeBox(position, m_state == Trip ? m_settings.stopRadius : m_settings.parkingRadius);
        m_last = position;
        return;
    }
    const std::int64_t dt = (position.time - m_last->time) / kTrackTicksPerSecond;
    if (m_state == Parking)
        feedParking(position, dt);
    else
        feedTrip(position, dt);
    m_last = position;
}

void TrackAnalyzer::feedParking(const TrackPosition& position, std::int64_t dt) {
    const bool away = !m_box->contains(position);
    const bool moving = position.speed && *position.speed > m_settings.speedThreshold;
    if (!away && !moving) {
        reset();
        return;
    }
    if (!m_candidateStarted) {
        m_candidateStarted = true;
        m_candidateFirst = m_last;
    }
    m_candidateSeconds += dt;
    if (m_candidateSeconds < m_settings.tripStartTime || !away)
        return;
    switchTo(Trip);
}

void TrackAnalyzer::feedTrip(const TrackPosition& position, std::int64_t dt) {
    const bool staying = m_box->contains(position) && (!position.speed || *position.speed <= m_settings.speedThreshold);
    if (!staying) {
        reset();
        makeBox(position, m_settings.stopRadius);
        return;
    }
    if (!m_candidateStarted) {
        m_candidateStarted = true;
        m_candidateFirst = m_last;
        makeBox(*m_candidateFirst, m_settings.stopRadius);
    }
    m_candidateSeconds += dt;
    if (m_candidateSeconds >= m_settings.parkingStartTime) {
        switchTo(Parking);
        makeBox(position, m_settings.parkingRadius);
    }
}

void TrackAnalyzer::switchTo(State state) {
    m_initialEventPending = false;
    m_state = state;
    if (m_candidateFirst)
        notify(state, m_candidateFirst->time);
    m_candidateStarted = false;
    m_candidateFirst.reset();
    m_candidateSeconds = 0;
}

void TrackAnalyzer::reset() {
    if (m_initialEventPending && m_candidateFirst) {
        notify(m_state, m_candidateFirst->time);
        m_initialEventPending = false;
    }
    m_candidateStarted = false;
    m_candidateFirst.reset();
    m_candidateSeconds = 0;
}

void TrackAnalyzer::notify(State state, TrackTime time) {
    if (state == Trip)
        m_handler.onTripStarted(time);
    else
        m_handler.onParkingStarted(time);
}
