// The map page: shows what the player sends over the web channel ("sharedState") and reports clicks back.
/* global L, QWebChannel, qt */
(function () {
  'use strict';

  // Moscow until the player's settings arrive.
  var DEFAULT_CENTRE = [55.7558, 37.6173];
  var DEFAULT_ZOOM = 10;
  // How close to the edge the vehicle may come before the map follows it, as a share of the view.
  var FOLLOW_MARGIN = 0.12;
  // After the user drags the map, leave it where they put it for a while.
  var USER_PAN_PAUSE_MS = 4000;
  // Updates arrive every 40 ms in play; a longer gap means the player was paused, so glide no longer than this.
  var MAX_GLIDE_MS = 400;

  // Speed (km/h) to line colour, from slow blue through green and yellow to fast red.
  var SPEED_COLOURS = [
    [0, [44, 123, 182]],
    [20, [0, 166, 202]],
    [45, [26, 175, 84]],
    [70, [240, 200, 40]],
    [95, [242, 132, 36]],
    [120, [215, 25, 28]]
  ];
  // Segments are drawn in runs of one colour; this is the colour's speed step.
  var SPEED_BUCKET = 5;

  var state = {
    sharedState: null,
    language: 'en',
    zoomInText: 'Zoom in',
    zoomOutText: 'Zoom out',
    track: [],        // [{longitude, latitude, captured, speed}]
    marks: [],        // [{longitude, latitude, angle, captured}]
    position: null,   // the latest {timestamp, longitude, latitude, direction, seekedByUser}
    userPannedAt: 0
  };

  var map = L.map('map', {
    center: DEFAULT_CENTRE,
    zoom: DEFAULT_ZOOM,
    zoomControl: false,
    preferCanvas: true,
    worldCopyJump: true
  });

  // Tiles come from the player (its map files, its cache, the tile server) at the address the "tiles" object
  // gives; 'v' changes when the map files do, so tiles already shown are asked for again.
  var tiles = L.tileLayer('reelvue-tiles:{z}/{x}/{y}?v={v}', {
    maxZoom: 19,
    v: 0,
    attribution: escapeHtml('\u00a9 OpenStreetMap contributors')
  }).addTo(map);
  // Offline, a failed tile leaves the plain background rather than a broken picture.
  tiles.on('tileerror', function (event) {
    if (event.tile) event.tile.classList.add('tile-failed');
  });

  // Said once, as one small label, when not one tile of the view could be had; gone when tiles come.
  var noTiles = { text: 'No map tiles available', loaded: 0, failed: 0, element: null };
  function showNoTilesNotice(visible) {
    if (!noTiles.element) {
      noTiles.element = L.DomUtil.create('div', 'no-tiles-notice', map.getContainer());
      L.DomEvent.disableClickPropagation(noTiles.element);
    }
    noTiles.element.textContent = noTiles.text;
    noTiles.element.style.display = visible ? '' : 'none';
  }
  tiles.on('loading', function () { noTiles.loaded = 0; noTiles.failed = 0; });
  tiles.on('tileload', function () {
    noTiles.loaded++;
    if (noTiles.element) showNoTilesNotice(false);
  });
  tiles.on('tileerror', function () { noTiles.failed++; });
  tiles.on('load', function () { showNoTilesNotice(noTiles.loaded === 0 && noTiles.failed > 0); });

  function showAttribution(attribution) {
    map.attributionControl.removeAttribution(tiles.options.attribution);
    tiles.options.attribution = escapeHtml(attribution || '');
    map.attributionControl.addAttribution(tiles.options.attribution);
  }

  function connectTiles(tileState) {
    if (!tileState) return;
    noTiles.text = tileState.noTilesText || noTiles.text;
    tileState.sourcesChanged.connect(function (attribution) {
      showAttribution(attribution);
      tiles.options.v++;
      tiles.redraw();
    });
    tileState.noTilesTextChanged.connect(function (text) {
      noTiles.text = text;
      if (noTiles.element) noTiles.element.textContent = text;
    });
    if (tileState.urlTemplate) tiles.setUrl(tileState.urlTemplate + '?v={v}', true);
    showAttribution(tileState.attribution);
  }

  var zoomControl = null;
  L.control.scale({ imperial: false, maxWidth: 150 }).addTo(map);

  // Links would navigate the embedded view away from the map: keep it here.
  map.attributionControl.getContainer().addEventListener('click', function (event) {
    if (event.target && event.target.closest && event.target.closest('a')) event.preventDefault();
  });

  var trackLayer = L.layerGroup().addTo(map);
  var marksLayer = L.layerGroup().addTo(map);

  var vehicle = L.marker(DEFAULT_CENTRE, {
    icon: L.divIcon({
      className: 'vehicle-marker',
      iconSize: [32, 32],
      iconAnchor: [16, 16],
      html: '<svg class="vehicle-arrow" viewBox="0 0 32 32">' +
            '<circle cx="16" cy="16" r="14" fill="#ffffff" fill-opacity="0.9" stroke="#1f4e8c" stroke-width="2"/>' +
            '<path d="M16 4 L24.5 25 L16 20.5 L7.5 25 Z" fill="#1f4e8c"/></svg>'
    }),
    interactive: false,
    keyboard: false,
    zIndexOffset: 1000
  });
  var shown = null; // what the marker shows now: {latitude, longitude, angle}
  var glide = null; // {from, to, start, duration}

  function showZoomControl() {
    if (zoomControl) map.removeControl(zoomControl);
    zoomControl = L.control.zoom({ zoomInTitle: state.zoomInText, zoomOutTitle: state.zoomOutText });
    zoomControl.addTo(map);
  }

  function colourForSpeed(speed) {
    var value = Math.max(0, speed || 0);
    for (var i = 1; i < SPEED_COLOURS.length; ++i) {
      var low = SPEED_COLOURS[i - 1];
      var high = SPEED_COLOURS[i];
      if (value <= high[0]) {
        var f = (value - low[0]) / (high[0] - low[0]);
        var rgb = [0, 1, 2].map(function (c) { return Math.round(low[1][c] + f * (high[1][c] - low[1][c])); });
        return 'rgb(' + rgb.join(',') + ')';
      }
    }
    var last = SPEED_COLOURS[SPEED_COLOURS.length - 1][1];
    return 'rgb(' + last.join(',') + ')';
  }

  function bucketOf(speed) {
    return Math.floor(Math.max(0, speed || 0) / SPEED_BUCKET);
  }

  function latLngOf(point) {
    return [point.latitude, point.longitude];
  }

  // Each segment takes the colour of the mean speed carried by its end point; equal colours join into one line.
  function drawTrack() {
    trackLayer.clearLayers();
    var track = state.track;
    if (track.length === 0) return;
    var all = track.map(latLngOf);
    // A dark casing keeps the line readable on tiles and on the plain offline background alike.
    L.polyline(all, { color: '#1d2a36', weight: 8, opacity: 0.45, interactive: false }).addTo(trackLayer);
    if (track.length === 1) {
      L.circleMarker(all[0], { radius: 4, color: colourForSpeed(0), interactive: false }).addTo(trackLayer);
      return;
    }
    var run = [all[0], all[1]];
    var bucket = bucketOf(track[1].speed);
    for (var i = 2; i < track.length; ++i) {
      var next = bucketOf(track[i].speed);
      if (next !== bucket) {
        L.polyline(run, { color: colourForSpeed((bucket + 0.5) * SPEED_BUCKET), weight: 5, opacity: 1, interactive: false })
          .addTo(trackLayer);
        run = [all[i - 1]];
        bucket = next;
      }
      run.push(all[i]);
    }
    L.polyline(run, { color: colourForSpeed((bucket + 0.5) * SPEED_BUCKET), weight: 5, opacity: 1, interactive: false })
      .addTo(trackLayer);
  }

  function escapeHtml(text) {
    return String(text).replace(/[&<>"']/g, function (c) {
      return { '&': '&amp;', '<': '&lt;', '>': '&gt;', '"': '&quot;', "'": '&#39;' }[c];
    });
  }

  function pad(number) {
    return (number < 10 ? '0' : '') + number;
  }

  function timeText(seconds) {
    var date = new Date(seconds * 1000);
    return pad(date.getHours()) + ':' + pad(date.getMinutes()) + ':' + pad(date.getSeconds());
  }

  // The label sits on the right-hand side of travel, clear of the line it names.
  function labelHtml(mark) {
    if (mark.captured === undefined) return '';
    var side = (mark.angle + 90) * Math.PI / 180;
    var dx = Math.sin(side) * 11;
    var dy = -Math.cos(side) * 11;
    var shift = (dx < 0 ? '-100%' : '0') + ', -50%';
    return '<span class="time-mark-label" style="left: ' + (7 + dx).toFixed(1) + 'px; top: ' + (7 + dy).toFixed(1) +
           'px; transform: translate(' + shift + ')">' + timeText(mark.captured) + '</span>';
  }

  function drawMarks() {
    marksLayer.clearLayers();
    state.marks.forEach(function (mark) {
      var label = labelHtml(mark);
      L.marker(latLngOf(mark), {
        icon: L.divIcon({
          className: 'time-mark',
          iconSize: [14, 14],
          iconAnchor: [7, 7],
          html: '<svg class="time-mark-arrow" viewBox="0 0 14 14" style="transform: rotate(' + mark.angle + 'deg)">' +
                '<circle cx="7" cy="7" r="6" fill="#ffffff" stroke="#34495e" stroke-width="1.2"/>' +
                '<path d="M7 2 L10.5 10.5 L7 8.6 L3.5 10.5 Z" fill="#34495e"/></svg>' + label
        }),
        interactive: false,
        keyboard: false
      }).addTo(marksLayer);
    });
  }

  // Room around a fitted track beyond the band where the map follows the vehicle: otherwise the first
  // position at the track's edge pans the map and pushes the other end out of view. The vehicle's marker
  // (32 px) must fit inside as well.
  var FIT_EXTRA_PX = 20;
  // The closest a fitted track is shown: a parking period or a single fix is a spot, not a street plan.
  var FIT_MAX_ZOOM = 16;

  // standing: the map shows the track as fitted, not dragged or zoomed by the user since, so a change of the
  // view's size fits it again. pending: the view had no room for a fit yet (not laid out), the first size
  // it gets does. running: the zoom under way is the fit's own, not the user's.
  var fit = { standing: false, pending: false, running: false };

  function fitTrack() {
    if (state.track.length === 0) return;
    var size = map.getSize();
    var padX = Math.ceil(size.x * FOLLOW_MARGIN) + FIT_EXTRA_PX;
    var padY = Math.ceil(size.y * FOLLOW_MARGIN) + FIT_EXTRA_PX;
    if (size.x <= 2 * padX || size.y <= 2 * padY) {
      fit.pending = true;
      return;
    }
    fit.pending = false;
    fit.running = true;
    map.fitBounds(L.latLngBounds(state.track.map(latLngOf)), { padding: [padX, padY], maxZoom: FIT_MAX_ZOOM, animate: false });
    fit.running = false;
    fit.standing = true;
  }

  map.on('resize', function () {
    if (fit.standing || fit.pending) fitTrack();
  });
  map.on('zoomstart', function () {
    if (!fit.running) fit.standing = false;
  });

  function turnVehicle(angle) {
    var arrow = vehicle.getElement() && vehicle.getElement().querySelector('.vehicle-arrow');
    if (arrow) arrow.style.transform = 'rotate(' + angle + 'deg)';
  }

  function placeVehicle(place) {
    shown = place;
    vehicle.setLatLng([place.latitude, place.longitude]);
    turnVehicle(place.angle);
  }

  // The shorter way round from one heading to another, so a turn through north does not spin the marker.
  function angleBetween(from, to, f) {
    var delta = ((to - from) % 360 + 540) % 360 - 180;
    return from + f * delta;
  }

  function step(now) {
    if (!glide) return;
    var f = glide.duration > 0 ? Math.min(1, (now - glide.start) / glide.duration) : 1;
    var from = glide.from;
    var to = glide.to;
    placeVehicle({
      latitude: from.latitude + f * (to.latitude - from.latitude),
      longitude: from.longitude + f * (to.longitude - from.longitude),
      angle: angleBetween(from.angle, to.angle, f)
    });
    if (f < 1) {
      requestAnimationFrame(step);
    } else {
      glide = null;
    }
  }

  function keepInView(latLng, jump) {
    if (Date.now() - state.userPannedAt < USER_PAN_PAUSE_MS) return;
    if (map.getBounds().pad(-FOLLOW_MARGIN).contains(latLng)) return;
    map.panTo(latLng, { animate: !jump, duration: 0.3 });
  }

  var lastUpdate = 0;
  function showPosition(timestamp, longitude, latitude, direction, seekedByUser) {
    state.position = {
      timestamp: timestamp, longitude: longitude, latitude: latitude, direction: direction, seekedByUser: seekedByUser
    };
    if (!map.hasLayer(vehicle)) {
      vehicle.addTo(map);
      shown = null;
    }
    var target = { latitude: latitude, longitude: longitude, angle: direction };
    var now = performance.now();
    var gap = now - lastUpdate;
    lastUpdate = now;
    if (seekedByUser || !shown || gap > MAX_GLIDE_MS) {
      glide = null;
      placeVehicle(target);
    } else {
      var wasGliding = glide !== null;
      glide = { from: shown, to: target, start: now, duration: gap };
      if (!wasGliding) requestAnimationFrame(step);
    }
    keepInView(L.latLng(latitude, longitude), seekedByUser);
  }

  // The player sends its documents as JSON text (one piece crosses the channel fast); objects work too.
  function documentOf(value) {
    return typeof value === 'string' ? JSON.parse(value) : value;
  }

  function showTrack(message) {
    message = documentOf(message);
    var positions = (message && message.positions) || [];
    state.track = positions.map(function (point) {
      return {
        longitude: point.coordinates.longitude,
        latitude: point.coordinates.latitude,
        captured: point.captured,
        speed: point.speed
      };
    });
    glide = null;
    shown = null;
    if (map.hasLayer(vehicle)) map.removeLayer(vehicle);
    drawTrack();
    fitTrack();
  }

  function showMarks(postions) {
    state.marks = (documentOf(postions) || []).map(function (mark) {
      return {
        longitude: mark.coordinates.longitude,
        latitude: mark.coordinates.latitude,
        angle: mark.angle || 0,
        captured: mark.captured
      };
    });
    drawMarks();
  }

  function applyLanguage(language, zoomInText, zoomOutText) {
    state.language = language || state.language;
    state.zoomInText = zoomInText || state.zoomInText;
    state.zoomOutText = zoomOutText || state.zoomOutText;
    document.documentElement.lang = state.language;
    showZoomControl();
  }

  function applySettings(settings) {
    if (!settings) return;
    var text = settings.text || {};
    applyLanguage(settings.language, text.zoomIn, text.zoomOut);
    if (settings.capital && state.track.length === 0) {
      map.setView([settings.capital.latitude, settings.capital.longitude], DEFAULT_ZOOM, { animate: false });
    }
  }

  map.on('dragstart', function () {
    state.userPannedAt = Date.now();
    fit.standing = false;
  });
  map.on('click', function (event) {
    var latLng = event.latlng.wrap();
    if (state.sharedState) state.sharedState.onCoordinates(latLng.lng, latLng.lat);
  });

  showZoomControl();

  function connect() {
    if (typeof qt === 'undefined' || !qt.webChannelTransport) {
      console.warn('No web channel: the map runs without the player');
      return;
    }
    new QWebChannel(qt.webChannelTransport, function (channel) {
      var shared = channel.objects.sharedState;
      state.sharedState = shared;
      applySettings(shared.settings);
      shared.trackChanged.connect(showTrack);
      shared.positionChanged.connect(showPosition);
      shared.timeStepsChanged.connect(showMarks);
      shared.localeChanged.connect(function (locale, zoomInText, zoomOutText) {
        applyLanguage(String(locale || '').substring(0, 2), zoomInText, zoomOutText);
      });
      connectTiles(channel.objects.tiles);
      shared.init();
    });
  }

  // For the player's tests and for looking inside from the developer tools.
  window.reelvueMap = {
    map: map,
    state: state,
    trackLineCount: function () { return trackLayer.getLayers().length; },
    tiles: tiles,
    vehicleShown: function () { return map.hasLayer(vehicle) ? shown : null; },
    noTilesNotice: function () {
      return noTiles.element && noTiles.element.style.display !== 'none' ? noTiles.element.textContent : null;
    }
  };

  connect();
})();
