<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="cs_CZ" sourcelanguage="en_US">
<context>
    <name>EncodingSettingsDialog</name>
    <message>
        <source>Encoding settings</source>
        <translation>Nastavení kódování</translation>
    </message>
    <message>
        <source>Video file options</source>
        <translation>Možnosti videosouboru</translation>
    </message>
    <message>
        <source>Only video</source>
        <translation>Pouze video</translation>
    </message>
    <message>
        <source>Force reencoding</source>
        <translation>Vynutit překódování</translation>
    </message>
    <message>
        <source>Container type:</source>
        <translation>Typ kontejneru:</translation>
    </message>
    <message>
        <source>Camera</source>
        <translation>Kamera</translation>
    </message>
    <message>
        <source>Main</source>
        <translation>Hlavní</translation>
    </message>
    <message>
        <source>Rear</source>
        <translation>Zadní</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Uložit</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Zrušit</translation>
    </message>
    <message>
        <source>QuickTime file format (*.%1)</source>
        <translation>Soubor QuickTime (*.%1)</translation>
    </message>
    <message>
        <source>Matroska Multimedia file format (*.%1)</source>
        <translation>Soubor Matroska Multimedia (*.%1)</translation>
    </message>
    <message>
        <source>MPEG-4 Part 12 file format (*.%1)</source>
        <translation>Soubor MPEG-4 Part 12 (*.%1)</translation>
    </message>
    <message>
        <source>Cut to</source>
        <translation>Uložit výřez jako</translation>
    </message>
    <message>
        <source>File path is empty</source>
        <translation>Není zadána cesta k souboru</translation>
    </message>
    <message>
        <source>Invalid file extesion (must be: &apos;%1&apos; )</source>
        <translation>Neplatná přípona souboru (musí být „%1“)</translation>
    </message>
    <message>
        <source>Invalid file path</source>
        <translation>Neplatná cesta k souboru</translation>
    </message>
    <message>
        <source>Burn in time, speed and position</source>
        <translation>Vpálit čas, rychlost a polohu</translation>
    </message>
    <message>
        <source>The text is drawn into the pictures, so the cut is always re-encoded.</source>
        <translation>Text se kreslí do snímků, proto se výřez vždy překóduje.</translation>
    </message>
    <message>
        <source>The folder %1 does not exist.</source>
        <translation>Složka %1 neexistuje.</translation>
    </message>
    <message>
        <source>%1 is on the card the recordings come from: nothing is written there.</source>
        <translation>%1 je na kartě se záznamy: nic se tam nezapisuje.</translation>
    </message>
    <message>
        <source>%1 is a folder.</source>
        <translation>%1 je složka.</translation>
    </message>
    <message>
        <source>%1 cannot be written.</source>
        <translation>%1 nelze zapsat.</translation>
    </message>
    <message>
        <source>The folder %1 cannot be written to.</source>
        <translation>Do složky %1 nelze zapisovat.</translation>
    </message>
    <message>
        <source>%1 exists: Save asks before replacing it.</source>
        <translation>%1 již existuje: před nahrazením se zeptá.</translation>
    </message>
</context>
<context>
    <name>EvidenceFlow</name>
    <message>
        <source>Save evidence</source>
        <translation>Uložit důkazy</translation>
    </message>
    <message>
        <source>Mark moment</source>
        <translation>Označit okamžik</translation>
    </message>
    <message>
        <source>Moment marked: %1</source>
        <translation>Okamžik označen: %1</translation>
    </message>
    <message>
        <source>Save evidence to</source>
        <translation>Uložit důkazy do</translation>
    </message>
    <message>
        <source>Saving evidence</source>
        <translation>Ukládání důkazů</translation>
    </message>
    <message>
        <source>The evidence pack is in %1</source>
        <translation>Balíček důkazů je v %1</translation>
    </message>
    <message>
        <source>The evidence pack was not made.

%1</source>
        <translation>Balíček důkazů nebyl vytvořen.

%1</translation>
    </message>
</context>
<context>
    <name>EvidencePack</name>
    <message>
        <source>No folder was given for the evidence pack.</source>
        <translation>Nebyla zadána složka pro balíček důkazů.</translation>
    </message>
    <message>
        <source>%1 already exists: an evidence pack always goes into a new folder.</source>
        <translation>%1 již existuje: balíček důkazů se vždy ukládá do nové složky.</translation>
    </message>
    <message>
        <source>The folder %1 does not exist.</source>
        <translation>Složka %1 neexistuje.</translation>
    </message>
    <message>
        <source>%1 is on the card being read: choose a folder elsewhere.</source>
        <translation>%1 je na čtené kartě: zvolte složku jinde.</translation>
    </message>
    <message>
        <source>The interval of the evidence pack is empty.</source>
        <translation>Interval balíčku důkazů je prázdný.</translation>
    </message>
    <message>
        <source>The folder %1 can&apos;t be made.</source>
        <translation>Složku %1 nelze vytvořit.</translation>
    </message>
    <message>
        <source>The evidence pack failed: %1</source>
        <translation>Vytvoření balíčku důkazů selhalo: %1</translation>
    </message>
    <message>
        <source>The disk is full: the evidence pack does not fit into %1.</source>
        <translation>Disk je plný: balíček důkazů se nevejde do %1.</translation>
    </message>
    <message>
        <source>Nothing was recorded between %1 and %2.</source>
        <translation>Mezi %1 a %2 nebylo nic nahráno.</translation>
    </message>
    <message>
        <source>The disk is full: the evidence pack needs at least %1 MB in %2, and %3 MB are free.</source>
        <translation>Disk je plný: balíček důkazů potřebuje alespoň %1 MB v %2, volných je %3 MB.</translation>
    </message>
    <message>
        <source>Can&apos;t read %1: %2</source>
        <translation>Nelze číst %1: %2</translation>
    </message>
    <message>
        <source>Can&apos;t write %1: %2</source>
        <translation>Nelze zapsat %1: %2</translation>
    </message>
    <message>
        <source>The copy %1 differs from its original %2.</source>
        <translation>Kopie %1 se liší od originálu %2.</translation>
    </message>
    <message>
        <source>The track could not be written as %1.</source>
        <translation>Trasu se nepodařilo zapsat jako %1.</translation>
    </message>
    <message>
        <source>The front camera&apos;s clip could not be cut.</source>
        <translation>Úsek přední kamery se nepodařilo vyříznout.</translation>
    </message>
    <message>
        <source>The rear camera&apos;s clip could not be cut.</source>
        <translation>Úsek zadní kamery se nepodařilo vyříznout.</translation>
    </message>
    <message>
        <source>The overview video could not be made.</source>
        <translation>Přehledové video se nepodařilo vytvořit.</translation>
    </message>
    <message>
        <source>The report could not be written: %1</source>
        <translation>Zprávu se nepodařilo zapsat: %1</translation>
    </message>
</context>
<context>
    <name>EvidenceReport</name>
    <message>
        <source>Incident evidence</source>
        <translation>Důkazy o události</translation>
    </message>
    <message>
        <source>Date</source>
        <translation>Datum</translation>
    </message>
    <message>
        <source>Time</source>
        <translation>Čas</translation>
    </message>
    <message>
        <source>Place</source>
        <translation>Místo</translation>
    </message>
    <message>
        <source>not given</source>
        <translation>neuvedeno</translation>
    </message>
    <message>
        <source>Interval</source>
        <translation>Interval</translation>
    </message>
    <message>
        <source>Interval (UTC)</source>
        <translation>Interval (UTC)</translation>
    </message>
    <message>
        <source>Cameras</source>
        <translation>Kamery</translation>
    </message>
    <message>
        <source>Marked moments</source>
        <translation>Označené okamžiky</translation>
    </message>
    <message>
        <source>none</source>
        <translation>žádné</translation>
    </message>
    <message>
        <source>Made by %1 on %2 from %3.</source>
        <translation>Vytvořeno programem %1 %2 z %3.</translation>
    </message>
    <message>
        <source>GPS speed is indicative, not a calibrated measurement. The overview video and the pictures are derived from the recordings by this program; the files under &quot;originals&quot; are byte-identical copies of the card&apos;s files, and the clips are cut from them without re-encoding.</source>
        <translation>Rychlost z GPS je orientační, nejde o kalibrované měření. Přehledové video a snímky vytvořil z nahrávek tento program; soubory ve složce &quot;originals&quot; jsou bajtově shodné kopie souborů z karty a klipy jsou z nich vystřiženy bez překódování.</translation>
    </message>
    <message>
        <source>Map</source>
        <translation>Mapa</translation>
    </message>
    <message>
        <source>Speed, %1</source>
        <translation>Rychlost, %1</translation>
    </message>
    <message>
        <source>No GPS track for this interval.</source>
        <translation>Pro tento interval není žádná trasa GPS.</translation>
    </message>
    <message>
        <source>Track around the marked moments</source>
        <translation>Trasa kolem označených okamžiků</translation>
    </message>
    <message>
        <source>No moments were marked.</source>
        <translation>Nebyly označeny žádné okamžiky.</translation>
    </message>
    <message>
        <source>Moment %1: %2</source>
        <translation>Okamžik %1: %2</translation>
    </message>
    <message>
        <source>no GPS fix</source>
        <translation>bez GPS</translation>
    </message>
    <message>
        <source>Files</source>
        <translation>Soubory</translation>
    </message>
    <message>
        <source>SHA-256 checksums let anyone check that a file is unchanged (e.g. with sha256sum).</source>
        <translation>Kontrolní součty SHA-256 umožňují komukoli ověřit, že soubor nebyl změněn (např. programem sha256sum).</translation>
    </message>
    <message>
        <source>original: byte-identical copy</source>
        <translation>originál: bajtově shodná kopie</translation>
    </message>
    <message>
        <source>clip: the camera&apos;s pictures, cut without re-encoding</source>
        <translation>klip: obraz kamery vystřižený bez překódování</translation>
    </message>
    <message>
        <source>derived: made by this program, not original</source>
        <translation>odvozený: vytvořený tímto programem, není originál</translation>
    </message>
    <message>
        <source>%1 bytes, %2</source>
        <translation>%1 bajtů, %2</translation>
    </message>
    <message>
        <source>Latitude</source>
        <translation>Šířka</translation>
    </message>
    <message>
        <source>Longitude</source>
        <translation>Délka</translation>
    </message>
    <message>
        <source>Heading</source>
        <translation>Kurz</translation>
    </message>
</context>
<context>
    <name>ExportController</name>
    <message>
        <source>Save video</source>
        <translation>Uložit video</translation>
    </message>
    <message>
        <source>Save video and track</source>
        <translation>Uložit video a trasu</translation>
    </message>
    <message>
        <source>Save track</source>
        <translation>Uložit trasu</translation>
    </message>
    <message>
        <source>Save to</source>
        <translation>Uložit jako</translation>
    </message>
    <message>
        <source>Saving</source>
        <translation>Ukládání</translation>
    </message>
    <message>
        <source>The folder already holds files of the same names:
%1

Choose another folder.</source>
        <translation>Složka již obsahuje soubory se stejnými názvy:
%1

Zvolte jinou složku.</translation>
    </message>
    <message>
        <source>Copying status</source>
        <translation>Kopírování souborů</translation>
    </message>
    <message>
        <source>Encoding status</source>
        <translation>Kódování videa</translation>
    </message>
    <message>
        <source>Encoding</source>
        <translation>Kódování</translation>
    </message>
    <message>
        <source>Failed to copy track</source>
        <translation>Trasu se nepodařilo zkopírovat</translation>
    </message>
    <message>
        <source>Сopying completed</source>
        <translation>Kopírování dokončeno</translation>
    </message>
    <message>
        <source>Failed to copy</source>
        <translation>Kopírování se nezdařilo</translation>
    </message>
    <message>
        <source>Encoding completed</source>
        <translation>Kódování dokončeno</translation>
    </message>
    <message>
        <source>Failed to encode.

NOTE:
Try choose another container type or choose &quot;Only video&quot; option.
If all else fails choose &quot;Force reencoding&quot;.</source>
        <translation>Kódování se nezdařilo.

POZNÁMKA:
Zkuste zvolit jiný typ kontejneru nebo volbu „Pouze video“.
Pokud nic nepomůže, zvolte „Vynutit překódování“.</translation>
    </message>
    <message>
        <source>Track saving</source>
        <translation>Ukládání trasy</translation>
    </message>
    <message>
        <source>Track saving completed</source>
        <translation>Trasa byla uložena</translation>
    </message>
    <message>
        <source>Failed to save track</source>
        <translation>Trasu se nepodařilo uložit</translation>
    </message>
    <message>
        <source>Copies cannot go onto the card they come from.

Choose another folder.</source>
        <translation>Kopie nelze ukládat na kartu, ze které pocházejí.

Zvolte jinou složku.</translation>
    </message>
    <message>
        <source>%1 already exists.
Do you want to replace it?</source>
        <translation>%1 již existuje.
Chcete jej nahradit?</translation>
    </message>
    <message>
        <source>Only %1 s of the %2 s asked were written: the recordings end early or could not be read.</source>
        <translation>Zapsáno jen %1 s z požadovaných %2 s: záznamy končí dříve nebo je nelze přečíst.</translation>
    </message>
    <message>
        <source>Failed to encode.</source>
        <translation>Kódování se nezdařilo.</translation>
    </message>
    <message>
        <source>Rear</source>
        <translation>Zadní</translation>
    </message>
    <message>
        <source>Front</source>
        <translation>Přední</translation>
    </message>
    <message>
        <source>Show in folder</source>
        <translation>Zobrazit ve složce</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Soubor</translation>
    </message>
    <message>
        <source>Open external drive</source>
        <translation>Otevřít externí disk</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Ukončit</translation>
    </message>
    <message>
        <source>Ctrl+Q</source>
        <translation>Ctrl+Q</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Nápověda</translation>
    </message>
    <message>
        <source>Check update</source>
        <translation>Zkontrolovat aktualizace</translation>
    </message>
    <message>
        <source>Updating status</source>
        <translation>Aktualizace programu</translation>
    </message>
    <message>
        <source>Lumicor Reelvue</source>
        <translation>Lumicor Reelvue</translation>
    </message>
    <message>
        <source>Open directory</source>
        <translation>Otevřít složku</translation>
    </message>
    <message>
        <source>Open file</source>
        <translation>Otevřít soubor</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Uložit</translation>
    </message>
    <message>
        <source>RIDES</source>
        <translation>JÍZDY</translation>
    </message>
    <message>
        <source>PARKING</source>
        <translation>PARKOVÁNÍ</translation>
    </message>
    <message>
        <source>EVENTS</source>
        <translation>UDÁLOSTI</translation>
    </message>
    <message>
        <source>FILES</source>
        <translation>SOUBORY</translation>
    </message>
    <message>
        <source>Unmute</source>
        <translation>Zrušit ztlumení</translation>
    </message>
    <message>
        <source>Mute</source>
        <translation>Ztlumit</translation>
    </message>
    <message>
        <source>Volume</source>
        <translation>Hlasitost</translation>
    </message>
    <message>
        <source>Show fullscreen</source>
        <translation>Celá obrazovka</translation>
    </message>
    <message>
        <source>Show normal (not fullscreen)</source>
        <translation>Ukončit režim celé obrazovky</translation>
    </message>
    <message>
        <source>Seek to the beginning</source>
        <translation>Přejít na začátek</translation>
    </message>
    <message>
        <source>Slow down</source>
        <translation>Pomaleji</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>Zastavit</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>Přehrát</translation>
    </message>
    <message>
        <source>Pause</source>
        <translation>Pozastavit</translation>
    </message>
    <message>
        <source>Speed up</source>
        <translation>Rychleji</translation>
    </message>
    <message>
        <source>Seek to the ending</source>
        <translation>Přejít na konec</translation>
    </message>
    <message>
        <source>Start cycle play</source>
        <translation>Zapnout opakování úseku</translation>
    </message>
    <message>
        <source>Stop cycle play</source>
        <translation>Vypnout opakování úseku</translation>
    </message>
    <message>
        <source>Cut and save</source>
        <translation>Vyříznout a uložit</translation>
    </message>
    <message>
        <source>Rotate</source>
        <translation>Otočit</translation>
    </message>
    <message>
        <source>Confirm cut</source>
        <translation>Potvrdit výřez</translation>
    </message>
    <message>
        <source>Reject cut</source>
        <translation>Zrušit výřez</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;Zobrazit</translation>
    </message>
    <message>
        <source>Show video</source>
        <translation>Zobrazit video</translation>
    </message>
    <message>
        <source>Rotate video</source>
        <translation>Otočit video</translation>
    </message>
    <message>
        <source>Time stamps on track</source>
        <translation>Časové značky na trase</translation>
    </message>
    <message>
        <source>Charts</source>
        <translation>Grafy</translation>
    </message>
    <message>
        <source>Language</source>
        <translation>Jazyk</translation>
    </message>
    <message>
        <source>Ctrl+O</source>
        <translation>Ctrl+O</translation>
    </message>
    <message>
        <source>About</source>
        <translation>O programu</translation>
    </message>
    <message>
        <source>Main camera</source>
        <translation>Hlavní kamera</translation>
    </message>
    <message>
        <source>Rear camera</source>
        <translation>Zadní kamera</translation>
    </message>
    <message>
        <source>Disabled</source>
        <translation>Vypnuto</translation>
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
        <translation>Rychlost</translation>
    </message>
    <message>
        <source>Altitude</source>
        <translation>Výška</translation>
    </message>
    <message>
        <source>Number of satellites</source>
        <translation>Počet satelitů</translation>
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
        <translation>Verze %1</translation>
    </message>
</context>
<context>
    <name>MapWidget</name>
    <message>
        <source>Zoom in</source>
        <translation>Přiblížit</translation>
    </message>
    <message>
        <source>Zoom out</source>
        <translation>Oddálit</translation>
    </message>
    <message>
        <source>No map tiles available here: connect to the network or add an offline map (View menu)</source>
        <translation>Zde nejsou k dispozici žádné dlaždice mapy: připojte se k síti nebo přidejte offline mapu (nabídka Zobrazit)</translation>
    </message>
</context>
<context>
    <name>MbtilesSource</name>
    <message>
        <source>The file cannot be read: %1</source>
        <translation>Soubor nelze přečíst: %1</translation>
    </message>
    <message>
        <source>The file is empty.</source>
        <translation>Soubor je prázdný.</translation>
    </message>
    <message>
        <source>The file is not an MBTiles map (it is not an SQLite database).</source>
        <translation>Soubor není mapa MBTiles (není to databáze SQLite).</translation>
    </message>
    <message>
        <source>The file cannot be opened: %1</source>
        <translation>Soubor nelze otevřít: %1</translation>
    </message>
    <message>
        <source>The file holds vector tiles; only maps of pictures (PNG, JPEG, WebP) can be shown.</source>
        <translation>Soubor obsahuje vektorové dlaždice; zobrazit lze jen rastrové mapy (PNG, JPEG, WebP).</translation>
    </message>
    <message>
        <source>The file has no map tiles (%1).</source>
        <translation>Soubor nemá dlaždice mapy (%1).</translation>
    </message>
    <message>
        <source>The file is damaged: %1</source>
        <translation>Soubor je poškozený: %1</translation>
    </message>
    <message>
        <source>The file holds no map tiles.</source>
        <translation>Soubor neobsahuje žádné dlaždice mapy.</translation>
    </message>
    <message>
        <source>The file&apos;s tiles are not PNG, JPEG or WebP pictures.</source>
        <translation>Dlaždice v souboru nejsou obrázky PNG, JPEG ani WebP.</translation>
    </message>
</context>
<context>
    <name>OfflineMaps</name>
    <message>
        <source>Add offline map...</source>
        <translation>Přidat offline mapu...</translation>
    </message>
    <message>
        <source>Offline maps</source>
        <translation>Offline mapy</translation>
    </message>
    <message>
        <source>Add offline map</source>
        <translation>Přidat offline mapu</translation>
    </message>
    <message>
        <source>MBTiles maps (*.mbtiles)</source>
        <translation>Mapy MBTiles (*.mbtiles)</translation>
    </message>
    <message>
        <source>%1 cannot be used as an offline map: %2</source>
        <translation>%1 nelze použít jako offline mapu: %2</translation>
    </message>
    <message>
        <source>Offline map</source>
        <translation>Offline mapa</translation>
    </message>
    <message>
        <source>Forget offline maps</source>
        <translation>Zapomenout offline mapy</translation>
    </message>
</context>
<context>
    <name>OpenDialog</name>
    <message>
        <source>Open external drive</source>
        <translation>Otevřít externí disk</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>Otevřít</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Zrušit</translation>
    </message>
    <message>
        <source>Specified directory is not suitable</source>
        <translation>Zvolená složka není vhodná</translation>
    </message>
    <message>
        <source>Open directory</source>
        <translation>Otevřít složku</translation>
    </message>
</context>
<context>
    <name>OpenDialogItemModel</name>
    <message>
        <source>Choose directory to open</source>
        <translation>Vybrat složku…</translation>
    </message>
</context>
<context>
    <name>OverviewVideo</name>
    <message>
        <source>no GPS fix</source>
        <translation>bez GPS</translation>
    </message>
</context>
<context>
    <name>PictureSaver</name>
    <message>
        <source>Save video frame</source>
        <translation>Uložit snímek</translation>
    </message>
    <message>
        <source>Save video frame (main camera)</source>
        <translation>Uložit snímek (hlavní kamera)</translation>
    </message>
    <message>
        <source>Save video frame (rear camera)</source>
        <translation>Uložit snímek (zadní kamera)</translation>
    </message>
    <message>
        <source>Save window</source>
        <translation>Uložit snímek okna</translation>
    </message>
    <message>
        <source>Save image to</source>
        <translation>Uložit obrázek jako</translation>
    </message>
    <message>
        <source>JPEG (*.jpg);;PNG (*.png)</source>
        <translation>Obrázek JPEG (*.jpg);;Obrázek PNG (*.png)</translation>
    </message>
    <message>
        <source>Specified file path is not suitable</source>
        <translation>Zadaná cesta k souboru není vhodná</translation>
    </message>
</context>
<context>
    <name>PlaybackController</name>
    <message>
        <source>%1 cannot be played and is skipped. %2</source>
        <translation>%1 nelze přehrát, přeskočeno. %2</translation>
    </message>
</context>
<context>
    <name>PlaybackSession</name>
    <message>
        <source>Open a memory card, a folder or a video file</source>
        <translation>Otevřete paměťovou kartu, složku nebo videosoubor</translation>
    </message>
    <message>
        <source>Active camera(s) is(are) not available.</source>
        <translation>Zvolené kamery nejsou k dispozici.</translation>
    </message>
</context>
<context>
    <name>Playlist</name>
    <message>
        <source>The recording has lost its index (the camera lost power before it closed the file), so it cannot be played.</source>
        <translation>Záznam ztratil index (kamera ztratila napájení dřív, než soubor zavřela), proto jej nelze přehrát.</translation>
    </message>
    <message>
        <source>The recording cannot be read as a video: %1</source>
        <translation>Záznam nelze přečíst jako video: %1</translation>
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
        <translation>Začátek</translation>
    </message>
    <message>
        <source>End</source>
        <translation>Konec</translation>
    </message>
    <message>
        <source>Duration</source>
        <translation>Délka</translation>
    </message>
    <message>
        <source>Distance</source>
        <translation>Vzdálenost</translation>
    </message>
    <message>
        <source>Top speed</source>
        <translation>Max. rychlost</translation>
    </message>
    <message>
        <source>File</source>
        <translation>Soubor</translation>
    </message>
    <message>
        <source>Recordings that cannot be played and are skipped:</source>
        <translation>Záznamy, které nelze přehrát, se přeskakují:</translation>
    </message>
    <message>
        <source>Time from the file name</source>
        <translation>Čas z názvu souboru</translation>
    </message>
    <message>
        <source>Time from the GPS track</source>
        <translation>Čas ze záznamu trasy GPS</translation>
    </message>
    <message>
        <source>Time from the GPS track, counted back from its first fix to the start of the recording</source>
        <translation>Čas ze záznamu trasy GPS, odpočítaný zpět od první polohy k začátku záznamu</translation>
    </message>
    <message>
        <source>Time unknown: placed right after the recording before it</source>
        <translation>Čas neznámý: záznam zařazen hned za předchozí</translation>
    </message>
    <message>
        <source>Time unknown: placed right before the recording after it</source>
        <translation>Čas neznámý: záznam zařazen hned před následující</translation>
    </message>
    <message>
        <source>Time from the creation time stored in the video</source>
        <translation>Čas z času vytvoření uloženého ve videu</translation>
    </message>
    <message>
        <source>Time from the file&apos;s modification time, less the length of the recording</source>
        <translation>Čas změny souboru zmenšený o délku záznamu</translation>
    </message>
</context>
<context>
    <name>PlaylistPane</name>
    <message>
        <source>Open directory</source>
        <translation>Otevřít složku</translation>
    </message>
    <message>
        <source>Open file</source>
        <translation>Otevřít soubor</translation>
    </message>
    <message>
        <source>MP4, MOV(*.mp4 *.mov);;MP4(*.mp4);;MOV(*.mov)</source>
        <translation>Video MP4, MOV (*.mp4 *.mov);;MP4 (*.mp4);;MOV (*.mov)</translation>
    </message>
    <message>
        <source>Loading from directory status</source>
        <translation>Načítání záznamů</translation>
    </message>
    <message>
        <source>Failed to load</source>
        <translation>Načtení se nezdařilo</translation>
    </message>
    <message>
        <source>In the path specified there are no video files and the nested subfolder structure is missing or incorrect</source>
        <translation>V zadaném umístění nejsou žádné videosoubory a struktura podsložek chybí nebo je nesprávná</translation>
    </message>
    <message>
        <source>None of the videos found could be dated: their names give no recording time and no GPS track gives one</source>
        <translation>Žádné z nalezených videí nelze datovat: jejich názvy neuvádějí čas záznamu a žádná stopa GPS ho neudává</translation>
    </message>
</context>
<context>
    <name>PlaylistView</name>
    <message>
        <source>Open a memory card, a folder or a video file, or drop one here</source>
        <translation>Otevřete paměťovou kartu, složku či videosoubor, nebo je sem přetáhněte</translation>
    </message>
    <message>
        <source>Nothing in this list</source>
        <translation>Seznam je prázdný</translation>
    </message>
    <message>
        <source>Repair…</source>
        <translation>Opravit…</translation>
    </message>
</context>
<context>
    <name>ProgressDialog</name>
    <message>
        <source>Cancel</source>
        <translation>Zrušit</translation>
    </message>
    <message>
        <source>Calculating remaining time...</source>
        <translation>Výpočet zbývajícího času...</translation>
    </message>
    <message>
        <source>Remaining time: </source>
        <translation>Zbývá: </translation>
    </message>
</context>
<context>
    <name>RepairFlow</name>
    <message>
        <source>Repair</source>
        <translation>Oprava záznamu</translation>
    </message>
    <message>
        <source>No playable recording of the same camera lies beside this one, so its pictures cannot be recovered.</source>
        <translation>Vedle není žádný přehratelný záznam téže kamery, proto nelze obraz tohoto záznamu obnovit.</translation>
    </message>
    <message>
        <source>Save repaired recording to</source>
        <translation>Uložit opravený záznam do</translation>
    </message>
    <message>
        <source>Repairing</source>
        <translation>Opravuji</translation>
    </message>
    <message>
        <source>The pictures were recovered into %1 (without sound).</source>
        <translation>Obraz byl obnoven do %1 (bez zvuku).</translation>
    </message>
    <message>
        <source>Failed to repair: %1</source>
        <translation>Oprava se nezdařila: %1</translation>
    </message>
</context>
<context>
    <name>StorageOpener</name>
    <message>
        <source>The storage %1 with the loaded recordings was removed.</source>
        <translation>Úložiště %1 s otevřenými záznamy bylo odpojeno.</translation>
    </message>
</context>
<context>
    <name>TrackAttacher</name>
    <message>
        <source>Attach track...</source>
        <translation>Připojit trasu...</translation>
    </message>
    <message>
        <source>Detach track</source>
        <translation>Odpojit trasu</translation>
    </message>
    <message>
        <source>Track offset:</source>
        <translation>Posun trasy:</translation>
    </message>
    <message>
        <source> s</source>
        <translation> s</translation>
    </message>
    <message>
        <source>Seconds added to the times of the attached track: when its positions come too early on the video, make the offset larger</source>
        <translation>Sekundy přičtené k časům připojené trasy: když se její polohy na videu objevují příliš brzy, posun zvětšete</translation>
    </message>
    <message>
        <source>Attach track</source>
        <translation>Připojit trasu</translation>
    </message>
    <message>
        <source>Tracks (*.gpx *.kml *.nmea *.nma *.txt *.log);;All files (*)</source>
        <translation>Trasy (*.gpx *.kml *.nmea *.nma *.txt *.log);;Všechny soubory (*)</translation>
    </message>
    <message>
        <source>Reading track status</source>
        <translation>Stav čtení trasy</translation>
    </message>
    <message>
        <source>%1 could not be read as a GPX, KML or NMEA track with times</source>
        <translation>%1 nelze přečíst jako trasu GPX, KML nebo NMEA s časy</translation>
    </message>
</context>
<context>
    <name>TrackPlot</name>
    <message>
        <source>Speed, km/h</source>
        <translation>Rychlost, km/h</translation>
    </message>
    <message>
        <source>Altitude, m</source>
        <translation>Výška, m</translation>
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
        <translation>Žádná data</translation>
    </message>
</context>
<context>
    <name>Version check</name>
    <message>
        <source>Failed to download updated application</source>
        <translation>Novou verzi programu se nepodařilo stáhnout</translation>
    </message>
    <message>
        <source>Cannot write to file </source>
        <translation>Nelze zapsat soubor </translation>
    </message>
    <message>
        <source>Failed to start </source>
        <translation>Nepodařilo se spustit </translation>
    </message>
    <message>
        <source>A new version is available. Want to update?</source>
        <translation>Je k dispozici nová verze. Aktualizovat?</translation>
    </message>
    <message>
        <source>Yes</source>
        <translation>Ano</translation>
    </message>
    <message>
        <source>No</source>
        <translation>Ne</translation>
    </message>
    <message>
        <source>Application is up-to-date</source>
        <translation>Program je aktuální</translation>
    </message>
</context>
</TS>
