<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="pl_PL" sourcelanguage="en_US">
<context>
    <name>EncodingSettingsDialog</name>
    <message>
        <source>Encoding settings</source>
        <translation>Ustawienia kodowania</translation>
    </message>
    <message>
        <source>Video file options</source>
        <translation>Opcje pliku wideo</translation>
    </message>
    <message>
        <source>Only video</source>
        <translation>Tylko wideo</translation>
    </message>
    <message>
        <source>Force reencoding</source>
        <translation>Wymuś ponowne kodowanie</translation>
    </message>
    <message>
        <source>Container type:</source>
        <translation>Typ kontenera:</translation>
    </message>
    <message>
        <source>Camera</source>
        <translation>Kamera</translation>
    </message>
    <message>
        <source>Main</source>
        <translation>Główna</translation>
    </message>
    <message>
        <source>Rear</source>
        <translation>Tylna</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Zapisz</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Anuluj</translation>
    </message>
    <message>
        <source>QuickTime file format (*.%1)</source>
        <translation>Plik QuickTime (*.%1)</translation>
    </message>
    <message>
        <source>Matroska Multimedia file format (*.%1)</source>
        <translation>Plik Matroska Multimedia (*.%1)</translation>
    </message>
    <message>
        <source>MPEG-4 Part 12 file format (*.%1)</source>
        <translation>Plik MPEG-4 Part 12 (*.%1)</translation>
    </message>
    <message>
        <source>Cut to</source>
        <translation>Zapisz fragment jako</translation>
    </message>
    <message>
        <source>File path is empty</source>
        <translation>Nie podano ścieżki pliku</translation>
    </message>
    <message>
        <source>Invalid file extesion (must be: &apos;%1&apos; )</source>
        <translation>Nieprawidłowe rozszerzenie pliku (wymagane: „%1”)</translation>
    </message>
    <message>
        <source>Invalid file path</source>
        <translation>Nieprawidłowa ścieżka pliku</translation>
    </message>
    <message>
        <source>Burn in time, speed and position</source>
        <translation>Wpal czas, prędkość i pozycję</translation>
    </message>
    <message>
        <source>The text is drawn into the pictures, so the cut is always re-encoded.</source>
        <translation>Tekst jest rysowany na klatkach, więc fragment jest zawsze kodowany ponownie.</translation>
    </message>
    <message>
        <source>The folder %1 does not exist.</source>
        <translation>Folder %1 nie istnieje.</translation>
    </message>
    <message>
        <source>%1 is on the card the recordings come from: nothing is written there.</source>
        <translation>%1 jest na karcie z nagraniami: nic nie jest tam zapisywane.</translation>
    </message>
    <message>
        <source>%1 is a folder.</source>
        <translation>%1 jest folderem.</translation>
    </message>
    <message>
        <source>%1 cannot be written.</source>
        <translation>Nie można zapisać %1.</translation>
    </message>
    <message>
        <source>The folder %1 cannot be written to.</source>
        <translation>Nie można zapisywać do folderu %1.</translation>
    </message>
    <message>
        <source>%1 exists: Save asks before replacing it.</source>
        <translation>%1 już istnieje: przed zastąpieniem padnie pytanie.</translation>
    </message>
</context>
<context>
    <name>EvidenceFlow</name>
    <message>
        <source>Save evidence</source>
        <translation>Zapisz dowody</translation>
    </message>
    <message>
        <source>Mark moment</source>
        <translation>Zaznacz chwilę</translation>
    </message>
    <message>
        <source>Moment marked: %1</source>
        <translation>Zaznaczono chwilę: %1</translation>
    </message>
    <message>
        <source>Save evidence to</source>
        <translation>Zapisz dowody w</translation>
    </message>
    <message>
        <source>Saving evidence</source>
        <translation>Zapisywanie dowodów</translation>
    </message>
    <message>
        <source>The evidence pack is in %1</source>
        <translation>Pakiet dowodowy znajduje się w %1</translation>
    </message>
    <message>
        <source>The evidence pack was not made.

%1</source>
        <translation>Pakiet dowodowy nie został utworzony.

%1</translation>
    </message>
</context>
<context>
    <name>EvidencePack</name>
    <message>
        <source>No folder was given for the evidence pack.</source>
        <translation>Nie podano folderu dla pakietu dowodowego.</translation>
    </message>
    <message>
        <source>%1 already exists: an evidence pack always goes into a new folder.</source>
        <translation>%1 już istnieje: pakiet dowodowy zawsze trafia do nowego folderu.</translation>
    </message>
    <message>
        <source>The folder %1 does not exist.</source>
        <translation>Folder %1 nie istnieje.</translation>
    </message>
    <message>
        <source>%1 is on the card being read: choose a folder elsewhere.</source>
        <translation>%1 znajduje się na odczytywanej karcie: wybierz folder w innym miejscu.</translation>
    </message>
    <message>
        <source>The interval of the evidence pack is empty.</source>
        <translation>Przedział pakietu dowodowego jest pusty.</translation>
    </message>
    <message>
        <source>The folder %1 can&apos;t be made.</source>
        <translation>Nie można utworzyć folderu %1.</translation>
    </message>
    <message>
        <source>The evidence pack failed: %1</source>
        <translation>Tworzenie pakietu dowodowego nie powiodło się: %1</translation>
    </message>
    <message>
        <source>The disk is full: the evidence pack does not fit into %1.</source>
        <translation>Dysk jest pełny: pakiet dowodowy nie mieści się w %1.</translation>
    </message>
    <message>
        <source>Nothing was recorded between %1 and %2.</source>
        <translation>Między %1 a %2 nic nie nagrano.</translation>
    </message>
    <message>
        <source>The disk is full: the evidence pack needs at least %1 MB in %2, and %3 MB are free.</source>
        <translation>Dysk jest pełny: pakiet dowodowy potrzebuje co najmniej %1 MB w %2, a wolne jest %3 MB.</translation>
    </message>
    <message>
        <source>Can&apos;t read %1: %2</source>
        <translation>Nie można odczytać %1: %2</translation>
    </message>
    <message>
        <source>Can&apos;t write %1: %2</source>
        <translation>Nie można zapisać %1: %2</translation>
    </message>
    <message>
        <source>The copy %1 differs from its original %2.</source>
        <translation>Kopia %1 różni się od oryginału %2.</translation>
    </message>
    <message>
        <source>The track could not be written as %1.</source>
        <translation>Nie udało się zapisać trasy jako %1.</translation>
    </message>
    <message>
        <source>The front camera&apos;s clip could not be cut.</source>
        <translation>Nie udało się wyciąć fragmentu z przedniej kamery.</translation>
    </message>
    <message>
        <source>The rear camera&apos;s clip could not be cut.</source>
        <translation>Nie udało się wyciąć fragmentu z tylnej kamery.</translation>
    </message>
    <message>
        <source>The overview video could not be made.</source>
        <translation>Nie udało się utworzyć filmu przeglądowego.</translation>
    </message>
    <message>
        <source>The report could not be written: %1</source>
        <translation>Nie udało się zapisać raportu: %1</translation>
    </message>
</context>
<context>
    <name>EvidenceReport</name>
    <message>
        <source>Incident evidence</source>
        <translation>Dowody zdarzenia</translation>
    </message>
    <message>
        <source>Date</source>
        <translation>Data</translation>
    </message>
    <message>
        <source>Time</source>
        <translation>Czas</translation>
    </message>
    <message>
        <source>Place</source>
        <translation>Miejsce</translation>
    </message>
    <message>
        <source>not given</source>
        <translation>nie podano</translation>
    </message>
    <message>
        <source>Interval</source>
        <translation>Przedział</translation>
    </message>
    <message>
        <source>Interval (UTC)</source>
        <translation>Przedział (UTC)</translation>
    </message>
    <message>
        <source>Cameras</source>
        <translation>Kamery</translation>
    </message>
    <message>
        <source>Marked moments</source>
        <translation>Zaznaczone chwile</translation>
    </message>
    <message>
        <source>none</source>
        <translation>brak</translation>
    </message>
    <message>
        <source>Made by %1 on %2 from %3.</source>
        <translation>Utworzono programem %1 %2 z %3.</translation>
    </message>
    <message>
        <source>GPS speed is indicative, not a calibrated measurement. The overview video and the pictures are derived from the recordings by this program; the files under &quot;originals&quot; are byte-identical copies of the card&apos;s files, and the clips are cut from them without re-encoding.</source>
        <translation>Prędkość z GPS jest orientacyjna, nie jest to pomiar wzorcowany. Film przeglądowy i zdjęcia zostały utworzone z nagrań przez ten program; pliki w folderze &quot;originals&quot; są identycznymi bajt po bajcie kopiami plików z karty, a fragmenty wycięto z nich bez ponownego kodowania.</translation>
    </message>
    <message>
        <source>Map</source>
        <translation>Mapa</translation>
    </message>
    <message>
        <source>Speed, %1</source>
        <translation>Prędkość, %1</translation>
    </message>
    <message>
        <source>No GPS track for this interval.</source>
        <translation>Brak śladu GPS dla tego przedziału.</translation>
    </message>
    <message>
        <source>Track around the marked moments</source>
        <translation>Ślad wokół zaznaczonych chwil</translation>
    </message>
    <message>
        <source>No moments were marked.</source>
        <translation>Nie zaznaczono żadnych chwil.</translation>
    </message>
    <message>
        <source>Moment %1: %2</source>
        <translation>Chwila %1: %2</translation>
    </message>
    <message>
        <source>no GPS fix</source>
        <translation>brak GPS</translation>
    </message>
    <message>
        <source>Files</source>
        <translation>Pliki</translation>
    </message>
    <message>
        <source>SHA-256 checksums let anyone check that a file is unchanged (e.g. with sha256sum).</source>
        <translation>Sumy kontrolne SHA-256 pozwalają każdemu sprawdzić, że plik nie został zmieniony (np. programem sha256sum).</translation>
    </message>
    <message>
        <source>original: byte-identical copy</source>
        <translation>oryginał: kopia identyczna bajt po bajcie</translation>
    </message>
    <message>
        <source>clip: the camera&apos;s pictures, cut without re-encoding</source>
        <translation>fragment: obraz kamery wycięty bez ponownego kodowania</translation>
    </message>
    <message>
        <source>derived: made by this program, not original</source>
        <translation>pochodny: utworzony przez ten program, nie oryginał</translation>
    </message>
    <message>
        <source>%1 bytes, %2</source>
        <translation>%1 bajtów, %2</translation>
    </message>
    <message>
        <source>Latitude</source>
        <translation>Szerokość</translation>
    </message>
    <message>
        <source>Longitude</source>
        <translation>Długość</translation>
    </message>
    <message>
        <source>Heading</source>
        <translation>Kurs</translation>
    </message>
</context>
<context>
    <name>ExportController</name>
    <message>
        <source>Save video</source>
        <translation>Zapisz wideo</translation>
    </message>
    <message>
        <source>Save video and track</source>
        <translation>Zapisz wideo i trasę</translation>
    </message>
    <message>
        <source>Save track</source>
        <translation>Zapisz trasę</translation>
    </message>
    <message>
        <source>Save to</source>
        <translation>Zapisz jako</translation>
    </message>
    <message>
        <source>Saving</source>
        <translation>Zapisywanie</translation>
    </message>
    <message>
        <source>The folder already holds files of the same names:
%1

Choose another folder.</source>
        <translation>Folder zawiera już pliki o tych nazwach:
%1

Wybierz inny folder.</translation>
    </message>
    <message>
        <source>Copying status</source>
        <translation>Kopiowanie plików</translation>
    </message>
    <message>
        <source>Encoding status</source>
        <translation>Kodowanie wideo</translation>
    </message>
    <message>
        <source>Encoding</source>
        <translation>Kodowanie</translation>
    </message>
    <message>
        <source>Failed to copy track</source>
        <translation>Nie udało się skopiować trasy</translation>
    </message>
    <message>
        <source>Сopying completed</source>
        <translation>Kopiowanie zakończone</translation>
    </message>
    <message>
        <source>Failed to copy</source>
        <translation>Kopiowanie nie powiodło się</translation>
    </message>
    <message>
        <source>Encoding completed</source>
        <translation>Kodowanie zakończone</translation>
    </message>
    <message>
        <source>Failed to encode.

NOTE:
Try choose another container type or choose &quot;Only video&quot; option.
If all else fails choose &quot;Force reencoding&quot;.</source>
        <translation>Kodowanie nie powiodło się.

UWAGA:
Spróbuj wybrać inny typ kontenera lub opcję „Tylko wideo”.
Jeśli to nie pomoże, wybierz „Wymuś ponowne kodowanie”.</translation>
    </message>
    <message>
        <source>Track saving</source>
        <translation>Zapisywanie trasy</translation>
    </message>
    <message>
        <source>Track saving completed</source>
        <translation>Trasa została zapisana</translation>
    </message>
    <message>
        <source>Failed to save track</source>
        <translation>Nie udało się zapisać trasy</translation>
    </message>
    <message>
        <source>Copies cannot go onto the card they come from.

Choose another folder.</source>
        <translation>Kopii nie można zapisać na karcie, z której pochodzą.

Wybierz inny folder.</translation>
    </message>
    <message>
        <source>%1 already exists.
Do you want to replace it?</source>
        <translation>%1 już istnieje.
Czy chcesz go zastąpić?</translation>
    </message>
    <message>
        <source>Only %1 s of the %2 s asked were written: the recordings end early or could not be read.</source>
        <translation>Zapisano tylko %1 s z żądanych %2 s: nagrania kończą się wcześniej lub nie dało się ich odczytać.</translation>
    </message>
    <message>
        <source>Failed to encode.</source>
        <translation>Nie udało się zakodować.</translation>
    </message>
    <message>
        <source>Rear</source>
        <translation>Tylna</translation>
    </message>
    <message>
        <source>Front</source>
        <translation>Przednia</translation>
    </message>
    <message>
        <source>Show in folder</source>
        <translation>Pokaż w folderze</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Plik</translation>
    </message>
    <message>
        <source>Open external drive</source>
        <translation>Otwórz dysk zewnętrzny</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Zakończ</translation>
    </message>
    <message>
        <source>Ctrl+Q</source>
        <translation>Ctrl+Q</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>Pomo&amp;c</translation>
    </message>
    <message>
        <source>Check update</source>
        <translation>Sprawdź aktualizacje</translation>
    </message>
    <message>
        <source>Updating status</source>
        <translation>Aktualizacja programu</translation>
    </message>
    <message>
        <source>Lumicor Reelvue</source>
        <translation>Lumicor Reelvue</translation>
    </message>
    <message>
        <source>Open directory</source>
        <translation>Otwórz folder</translation>
    </message>
    <message>
        <source>Open file</source>
        <translation>Otwórz plik</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Zapisz</translation>
    </message>
    <message>
        <source>RIDES</source>
        <translation>PRZEJAZDY</translation>
    </message>
    <message>
        <source>PARKING</source>
        <translation>PARKOWANIE</translation>
    </message>
    <message>
        <source>EVENTS</source>
        <translation>ZDARZENIA</translation>
    </message>
    <message>
        <source>FILES</source>
        <translation>PLIKI</translation>
    </message>
    <message>
        <source>Unmute</source>
        <translation>Wyłącz wyciszenie</translation>
    </message>
    <message>
        <source>Mute</source>
        <translation>Wycisz</translation>
    </message>
    <message>
        <source>Volume</source>
        <translation>Głośność</translation>
    </message>
    <message>
        <source>Show fullscreen</source>
        <translation>Pełny ekran</translation>
    </message>
    <message>
        <source>Show normal (not fullscreen)</source>
        <translation>Wyjdź z pełnego ekranu</translation>
    </message>
    <message>
        <source>Seek to the beginning</source>
        <translation>Przejdź na początek</translation>
    </message>
    <message>
        <source>Slow down</source>
        <translation>Wolniej</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>Zatrzymaj</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>Odtwarzaj</translation>
    </message>
    <message>
        <source>Pause</source>
        <translation>Wstrzymaj</translation>
    </message>
    <message>
        <source>Speed up</source>
        <translation>Szybciej</translation>
    </message>
    <message>
        <source>Seek to the ending</source>
        <translation>Przejdź na koniec</translation>
    </message>
    <message>
        <source>Start cycle play</source>
        <translation>Włącz zapętlanie fragmentu</translation>
    </message>
    <message>
        <source>Stop cycle play</source>
        <translation>Wyłącz zapętlanie fragmentu</translation>
    </message>
    <message>
        <source>Cut and save</source>
        <translation>Wytnij i zapisz</translation>
    </message>
    <message>
        <source>Rotate</source>
        <translation>Obróć</translation>
    </message>
    <message>
        <source>Confirm cut</source>
        <translation>Zatwierdź wycięcie</translation>
    </message>
    <message>
        <source>Reject cut</source>
        <translation>Odrzuć wycięcie</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;Widok</translation>
    </message>
    <message>
        <source>Show video</source>
        <translation>Pokaż wideo</translation>
    </message>
    <message>
        <source>Rotate video</source>
        <translation>Obróć wideo</translation>
    </message>
    <message>
        <source>Time stamps on track</source>
        <translation>Znaczniki czasu na trasie</translation>
    </message>
    <message>
        <source>Charts</source>
        <translation>Wykresy</translation>
    </message>
    <message>
        <source>Language</source>
        <translation>Język</translation>
    </message>
    <message>
        <source>Ctrl+O</source>
        <translation>Ctrl+O</translation>
    </message>
    <message>
        <source>About</source>
        <translation>O programie</translation>
    </message>
    <message>
        <source>Main camera</source>
        <translation>Kamera główna</translation>
    </message>
    <message>
        <source>Rear camera</source>
        <translation>Kamera tylna</translation>
    </message>
    <message>
        <source>Disabled</source>
        <translation>Wyłączone</translation>
    </message>
    <message>
        <source>30 seconds</source>
        <translation>30 sekund</translation>
    </message>
    <message>
        <source>1 minute</source>
        <translation>1 minuta</translation>
    </message>
    <message>
        <source>5 minutes</source>
        <translation>5 minut</translation>
    </message>
    <message>
        <source>20 minutes</source>
        <translation>20 minut</translation>
    </message>
    <message>
        <source>Speed</source>
        <translation>Prędkość</translation>
    </message>
    <message>
        <source>Altitude</source>
        <translation>Wysokość</translation>
    </message>
    <message>
        <source>Number of satellites</source>
        <translation>Liczba satelitów</translation>
    </message>
    <message>
        <source>HDOP</source>
        <translation>HDOP</translation>
    </message>
    <message>
        <source>VDOP</source>
        <translation>VDOP</translation>
    </message>
    <message>
        <source>PDOP</source>
        <translation>PDOP</translation>
    </message>
    <message>
        <source>English</source>
        <translation>English</translation>
    </message>
    <message>
        <source>Russian</source>
        <translation>Русский</translation>
    </message>
    <message>
        <source>Polish</source>
        <translation>Polski</translation>
    </message>
    <message>
        <source>Czech</source>
        <translation>Čeština</translation>
    </message>
    <message>
        <source>Version %1</source>
        <translation>Wersja %1</translation>
    </message>
</context>
<context>
    <name>MapWidget</name>
    <message>
        <source>Zoom in</source>
        <translation>Powiększ</translation>
    </message>
    <message>
        <source>Zoom out</source>
        <translation>Pomniejsz</translation>
    </message>
    <message>
        <source>No map tiles available here: connect to the network or add an offline map (View menu)</source>
        <translation>Brak kafelków mapy w tym miejscu: połącz się z siecią lub dodaj mapę offline (menu Widok)</translation>
    </message>
</context>
<context>
    <name>MbtilesSource</name>
    <message>
        <source>The file cannot be read: %1</source>
        <translation>Nie można odczytać pliku: %1</translation>
    </message>
    <message>
        <source>The file is empty.</source>
        <translation>Plik jest pusty.</translation>
    </message>
    <message>
        <source>The file is not an MBTiles map (it is not an SQLite database).</source>
        <translation>Plik nie jest mapą MBTiles (nie jest bazą danych SQLite).</translation>
    </message>
    <message>
        <source>The file cannot be opened: %1</source>
        <translation>Nie można otworzyć pliku: %1</translation>
    </message>
    <message>
        <source>The file holds vector tiles; only maps of pictures (PNG, JPEG, WebP) can be shown.</source>
        <translation>Plik zawiera kafelki wektorowe; można wyświetlić tylko mapy rastrowe (PNG, JPEG, WebP).</translation>
    </message>
    <message>
        <source>The file has no map tiles (%1).</source>
        <translation>Plik nie ma kafelków mapy (%1).</translation>
    </message>
    <message>
        <source>The file is damaged: %1</source>
        <translation>Plik jest uszkodzony: %1</translation>
    </message>
    <message>
        <source>The file holds no map tiles.</source>
        <translation>Plik nie zawiera kafelków mapy.</translation>
    </message>
    <message>
        <source>The file&apos;s tiles are not PNG, JPEG or WebP pictures.</source>
        <translation>Kafelki w pliku nie są obrazami PNG, JPEG ani WebP.</translation>
    </message>
</context>
<context>
    <name>OfflineMaps</name>
    <message>
        <source>Add offline map...</source>
        <translation>Dodaj mapę offline...</translation>
    </message>
    <message>
        <source>Offline maps</source>
        <translation>Mapy offline</translation>
    </message>
    <message>
        <source>Add offline map</source>
        <translation>Dodaj mapę offline</translation>
    </message>
    <message>
        <source>MBTiles maps (*.mbtiles)</source>
        <translation>Mapy MBTiles (*.mbtiles)</translation>
    </message>
    <message>
        <source>%1 cannot be used as an offline map: %2</source>
        <translation>Pliku %1 nie można użyć jako mapy offline: %2</translation>
    </message>
    <message>
        <source>Offline map</source>
        <translation>Mapa offline</translation>
    </message>
    <message>
        <source>Forget offline maps</source>
        <translation>Zapomnij mapy offline</translation>
    </message>
</context>
<context>
    <name>OpenDialog</name>
    <message>
        <source>Open external drive</source>
        <translation>Otwórz dysk zewnętrzny</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>Otwórz</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Anuluj</translation>
    </message>
    <message>
        <source>Specified directory is not suitable</source>
        <translation>Wybrany folder nie jest odpowiedni</translation>
    </message>
    <message>
        <source>Open directory</source>
        <translation>Otwórz folder</translation>
    </message>
</context>
<context>
    <name>OpenDialogItemModel</name>
    <message>
        <source>Choose directory to open</source>
        <translation>Wybierz folder…</translation>
    </message>
</context>
<context>
    <name>OverviewVideo</name>
    <message>
        <source>no GPS fix</source>
        <translation>brak GPS</translation>
    </message>
</context>
<context>
    <name>PictureSaver</name>
    <message>
        <source>Save video frame</source>
        <translation>Zapisz klatkę</translation>
    </message>
    <message>
        <source>Save video frame (main camera)</source>
        <translation>Zapisz klatkę (kamera główna)</translation>
    </message>
    <message>
        <source>Save video frame (rear camera)</source>
        <translation>Zapisz klatkę (kamera tylna)</translation>
    </message>
    <message>
        <source>Save window</source>
        <translation>Zapisz zrzut okna</translation>
    </message>
    <message>
        <source>Save image to</source>
        <translation>Zapisz obraz jako</translation>
    </message>
    <message>
        <source>JPEG (*.jpg);;PNG (*.png)</source>
        <translation>Obraz JPEG (*.jpg);;Obraz PNG (*.png)</translation>
    </message>
    <message>
        <source>Specified file path is not suitable</source>
        <translation>Wskazana ścieżka pliku jest nieodpowiednia</translation>
    </message>
</context>
<context>
    <name>PlaybackController</name>
    <message>
        <source>%1 cannot be played and is skipped. %2</source>
        <translation>Nie można odtworzyć %1, pominięto. %2</translation>
    </message>
</context>
<context>
    <name>PlaybackSession</name>
    <message>
        <source>Open a memory card, a folder or a video file</source>
        <translation>Otwórz kartę pamięci, folder lub plik wideo</translation>
    </message>
    <message>
        <source>Active camera(s) is(are) not available.</source>
        <translation>Wybrane kamery są niedostępne.</translation>
    </message>
</context>
<context>
    <name>Playlist</name>
    <message>
        <source>The recording has lost its index (the camera lost power before it closed the file), so it cannot be played.</source>
        <translation>Nagranie utraciło indeks (kamera straciła zasilanie, zanim zamknęła plik), więc nie można go odtworzyć.</translation>
    </message>
    <message>
        <source>The recording cannot be read as a video: %1</source>
        <translation>Nagrania nie można odczytać jako wideo: %1</translation>
    </message>
</context>
<context>
    <name>PlaylistItemModel</name>
    <message>
        <source>%1 km</source>
        <translation>%1 km</translation>
    </message>
    <message>
        <source>%1 km/h</source>
        <translation>%1 km/h</translation>
    </message>
    <message>
        <source>Start</source>
        <translation>Początek</translation>
    </message>
    <message>
        <source>End</source>
        <translation>Koniec</translation>
    </message>
    <message>
        <source>Duration</source>
        <translation>Czas trwania</translation>
    </message>
    <message>
        <source>Distance</source>
        <translation>Dystans</translation>
    </message>
    <message>
        <source>Top speed</source>
        <translation>Prędkość maks.</translation>
    </message>
    <message>
        <source>File</source>
        <translation>Plik</translation>
    </message>
    <message>
        <source>Recordings that cannot be played and are skipped:</source>
        <translation>Nagrania, których nie można odtworzyć, są pomijane:</translation>
    </message>
    <message>
        <source>Time from the file name</source>
        <translation>Czas z nazwy pliku</translation>
    </message>
    <message>
        <source>Time from the GPS track</source>
        <translation>Czas ze śladu GPS</translation>
    </message>
    <message>
        <source>Time from the GPS track, counted back from its first fix to the start of the recording</source>
        <translation>Czas ze śladu GPS, liczony wstecz od pierwszego pomiaru do początku nagrania</translation>
    </message>
    <message>
        <source>Time unknown: placed right after the recording before it</source>
        <translation>Czas nieznany: nagranie umieszczono tuż po poprzednim</translation>
    </message>
    <message>
        <source>Time unknown: placed right before the recording after it</source>
        <translation>Czas nieznany: nagranie umieszczono tuż przed następnym</translation>
    </message>
    <message>
        <source>Time from the creation time stored in the video</source>
        <translation>Czas z daty utworzenia zapisanej w filmie</translation>
    </message>
    <message>
        <source>Time from the file&apos;s modification time, less the length of the recording</source>
        <translation>Czas modyfikacji pliku pomniejszony o długość nagrania</translation>
    </message>
</context>
<context>
    <name>PlaylistPane</name>
    <message>
        <source>Open directory</source>
        <translation>Otwórz folder</translation>
    </message>
    <message>
        <source>Open file</source>
        <translation>Otwórz plik</translation>
    </message>
    <message>
        <source>MP4, MOV(*.mp4 *.mov);;MP4(*.mp4);;MOV(*.mov)</source>
        <translation>Wideo MP4, MOV (*.mp4 *.mov);;MP4 (*.mp4);;MOV (*.mov)</translation>
    </message>
    <message>
        <source>Loading from directory status</source>
        <translation>Wczytywanie nagrań</translation>
    </message>
    <message>
        <source>Failed to load</source>
        <translation>Nie udało się wczytać</translation>
    </message>
    <message>
        <source>In the path specified there are no video files and the nested subfolder structure is missing or incorrect</source>
        <translation>We wskazanej lokalizacji nie ma plików wideo, a struktury podfolderów brak lub jest nieprawidłowa</translation>
    </message>
    <message>
        <source>None of the videos found could be dated: their names give no recording time and no GPS track gives one</source>
        <translation>Nie udało się ustalić daty żadnego ze znalezionych nagrań wideo: ich nazwy nie zawierają czasu nagrania i żaden ślad GPS go nie podaje</translation>
    </message>
</context>
<context>
    <name>PlaylistView</name>
    <message>
        <source>Open a memory card, a folder or a video file, or drop one here</source>
        <translation>Otwórz kartę pamięci, folder lub plik wideo albo przeciągnij je tutaj</translation>
    </message>
    <message>
        <source>Nothing in this list</source>
        <translation>Lista jest pusta</translation>
    </message>
    <message>
        <source>Repair…</source>
        <translation>Napraw…</translation>
    </message>
</context>
<context>
    <name>ProgressDialog</name>
    <message>
        <source>Cancel</source>
        <translation>Anuluj</translation>
    </message>
    <message>
        <source>Calculating remaining time...</source>
        <translation>Obliczanie pozostałego czasu...</translation>
    </message>
    <message>
        <source>Remaining time: </source>
        <translation>Pozostało: </translation>
    </message>
</context>
<context>
    <name>RepairFlow</name>
    <message>
        <source>Repair</source>
        <translation>Naprawa nagrania</translation>
    </message>
    <message>
        <source>No playable recording of the same camera lies beside this one, so its pictures cannot be recovered.</source>
        <translation>Obok nie ma sprawnego nagrania z tej samej kamery, więc obrazów tego nagrania nie można odzyskać.</translation>
    </message>
    <message>
        <source>Save repaired recording to</source>
        <translation>Zapisz naprawione nagranie w</translation>
    </message>
    <message>
        <source>Repairing</source>
        <translation>Naprawianie</translation>
    </message>
    <message>
        <source>The pictures were recovered into %1 (without sound).</source>
        <translation>Obrazy odzyskano do %1 (bez dźwięku).</translation>
    </message>
    <message>
        <source>Failed to repair: %1</source>
        <translation>Nie udało się naprawić: %1</translation>
    </message>
</context>
<context>
    <name>StorageOpener</name>
    <message>
        <source>The storage %1 with the loaded recordings was removed.</source>
        <translation>Nośnik %1 z otwartymi nagraniami został odłączony.</translation>
    </message>
</context>
<context>
    <name>TrackAttacher</name>
    <message>
        <source>Attach track...</source>
        <translation>Dołącz ślad...</translation>
    </message>
    <message>
        <source>Detach track</source>
        <translation>Odłącz ślad</translation>
    </message>
    <message>
        <source>Track offset:</source>
        <translation>Przesunięcie śladu:</translation>
    </message>
    <message>
        <source> s</source>
        <translation> s</translation>
    </message>
    <message>
        <source>Seconds added to the times of the attached track: when its positions come too early on the video, make the offset larger</source>
        <translation>Sekundy dodawane do czasów dołączonego śladu: gdy jego pozycje pojawiają się na wideo za wcześnie, zwiększ przesunięcie</translation>
    </message>
    <message>
        <source>Attach track</source>
        <translation>Dołącz ślad</translation>
    </message>
    <message>
        <source>Tracks (*.gpx *.kml *.nmea *.nma *.txt *.log);;All files (*)</source>
        <translation>Ślady (*.gpx *.kml *.nmea *.nma *.txt *.log);;Wszystkie pliki (*)</translation>
    </message>
    <message>
        <source>Reading track status</source>
        <translation>Status odczytu śladu</translation>
    </message>
    <message>
        <source>%1 could not be read as a GPX, KML or NMEA track with times</source>
        <translation>Nie udało się odczytać %1 jako śladu GPX, KML lub NMEA z czasami</translation>
    </message>
</context>
<context>
    <name>TrackPlot</name>
    <message>
        <source>Speed, km/h</source>
        <translation>Prędkość, km/h</translation>
    </message>
    <message>
        <source>Altitude, m</source>
        <translation>Wysokość, m</translation>
    </message>
    <message>
        <source>Satellites</source>
        <translation>Satelity</translation>
    </message>
    <message>
        <source>HDOP</source>
        <translation>HDOP</translation>
    </message>
    <message>
        <source>PDOP</source>
        <translation>PDOP</translation>
    </message>
    <message>
        <source>VDOP</source>
        <translation>VDOP</translation>
    </message>
    <message>
        <source>No data</source>
        <translation>Brak danych</translation>
    </message>
</context>
<context>
    <name>Version check</name>
    <message>
        <source>Failed to download updated application</source>
        <translation>Nie udało się pobrać nowej wersji programu</translation>
    </message>
    <message>
        <source>Cannot write to file </source>
        <translation>Nie można zapisać pliku </translation>
    </message>
    <message>
        <source>Failed to start </source>
        <translation>Nie udało się uruchomić </translation>
    </message>
    <message>
        <source>A new version is available. Want to update?</source>
        <translation>Dostępna jest nowa wersja. Zaktualizować?</translation>
    </message>
    <message>
        <source>Yes</source>
        <translation>Tak</translation>
    </message>
    <message>
        <source>No</source>
        <translation>Nie</translation>
    </message>
    <message>
        <source>Application is up-to-date</source>
        <translation>Program jest aktualny</translation>
    </message>
</context>
</TS>
