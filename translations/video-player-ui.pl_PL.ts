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
</context>
<context>
    <name>MainWindow</name>
    <message>
        <source>Open a card or a folder of recordings</source>
        <translation>Otwórz kartę pamięci lub folder z nagraniami</translation>
    </message>
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
        <source>The storage %1 with the loaded recordings was removed.</source>
        <translation>Nośnik %1 z otwartymi nagraniami został odłączony.</translation>
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
