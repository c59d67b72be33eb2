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
</context>
<context>
    <name>MainWindow</name>
    <message>
        <source>Open a card or a folder of recordings</source>
        <translation>Otevřete paměťovou kartu nebo složku se záznamy</translation>
    </message>
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
        <source>The storage %1 with the loaded recordings was removed.</source>
        <translation>Úložiště %1 s otevřenými záznamy bylo odpojeno.</translation>
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
