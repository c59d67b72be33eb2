<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ru_RU" sourcelanguage="en_US">
<context>
    <name>EncodingSettingsDialog</name>
    <message>
        <source>Encoding settings</source>
        <translation>Параметры кодирования</translation>
    </message>
    <message>
        <source>Video file options</source>
        <translation>Параметры видеофайла</translation>
    </message>
    <message>
        <source>Only video</source>
        <translation>Только видео</translation>
    </message>
    <message>
        <source>Force reencoding</source>
        <translation>Принудительное перекодирование</translation>
    </message>
    <message>
        <source>Container type:</source>
        <translation>Тип контейнера:</translation>
    </message>
    <message>
        <source>Camera</source>
        <translation>Камера</translation>
    </message>
    <message>
        <source>Main</source>
        <translation>Основная</translation>
    </message>
    <message>
        <source>Rear</source>
        <translation>Задняя</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Сохранить</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Отмена</translation>
    </message>
    <message>
        <source>QuickTime file format (*.%1)</source>
        <translation>Файл QuickTime (*.%1)</translation>
    </message>
    <message>
        <source>Matroska Multimedia file format (*.%1)</source>
        <translation>Файл Matroska Multimedia (*.%1)</translation>
    </message>
    <message>
        <source>MPEG-4 Part 12 file format (*.%1)</source>
        <translation>Файл MPEG-4 Part 12 (*.%1)</translation>
    </message>
    <message>
        <source>Cut to</source>
        <translation>Сохранить фрагмент как</translation>
    </message>
    <message>
        <source>File path is empty</source>
        <translation>Не указан путь к файлу</translation>
    </message>
    <message>
        <source>Invalid file extesion (must be: &apos;%1&apos; )</source>
        <translation>Неверное расширение файла (нужно «%1»)</translation>
    </message>
    <message>
        <source>Invalid file path</source>
        <translation>Недопустимый путь к файлу</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <source>Open a card or a folder of recordings</source>
        <translation>Откройте карту памяти или папку с записями</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Файл</translation>
    </message>
    <message>
        <source>Open external drive</source>
        <translation>Открыть внешний диск</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Выход</translation>
    </message>
    <message>
        <source>Ctrl+Q</source>
        <translation>Ctrl+Q</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Справка</translation>
    </message>
    <message>
        <source>Check update</source>
        <translation>Проверить обновления</translation>
    </message>
    <message>
        <source>Updating status</source>
        <translation>Обновление программы</translation>
    </message>
    <message>
        <source>The storage %1 with the loaded recordings was removed.</source>
        <translation>Накопитель %1 с открытыми записями был извлечён.</translation>
    </message>
</context>
<context>
    <name>MapWidget</name>
    <message>
        <source>Zoom in</source>
        <translation>Приблизить</translation>
    </message>
    <message>
        <source>Zoom out</source>
        <translation>Отдалить</translation>
    </message>
</context>
<context>
    <name>OpenDialog</name>
    <message>
        <source>Open external drive</source>
        <translation>Открыть внешний диск</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>Открыть</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Отмена</translation>
    </message>
    <message>
        <source>Specified directory is not suitable</source>
        <translation>Выбранная папка не подходит</translation>
    </message>
    <message>
        <source>Open directory</source>
        <translation>Открыть папку</translation>
    </message>
</context>
<context>
    <name>OpenDialogItemModel</name>
    <message>
        <source>Choose directory to open</source>
        <translation>Выбрать папку…</translation>
    </message>
</context>
<context>
    <name>PlaylistItemModel</name>
    <message>
        <source>%1 km</source>
        <translation>%1 км</translation>
    </message>
    <message>
        <source>%1 km/h</source>
        <translation>%1 км/ч</translation>
    </message>
    <message>
        <source>Start</source>
        <translation>Начало</translation>
    </message>
    <message>
        <source>End</source>
        <translation>Конец</translation>
    </message>
    <message>
        <source>Duration</source>
        <translation>Длительность</translation>
    </message>
    <message>
        <source>Distance</source>
        <translation>Расстояние</translation>
    </message>
    <message>
        <source>Top speed</source>
        <translation>Макс. скорость</translation>
    </message>
    <message>
        <source>File</source>
        <translation>Файл</translation>
    </message>
</context>
<context>
    <name>ProgressDialog</name>
    <message>
        <source>Cancel</source>
        <translation>Отмена</translation>
    </message>
    <message>
        <source>Calculating remaining time...</source>
        <translation>Оценка оставшегося времени...</translation>
    </message>
    <message>
        <source>Remaining time: </source>
        <translation>Осталось: </translation>
    </message>
</context>
<context>
    <name>Version check</name>
    <message>
        <source>Failed to download updated application</source>
        <translation>Не удалось загрузить новую версию программы</translation>
    </message>
    <message>
        <source>Cannot write to file </source>
        <translation>Не удаётся записать файл </translation>
    </message>
    <message>
        <source>Failed to start </source>
        <translation>Не удалось запустить </translation>
    </message>
    <message>
        <source>A new version is available. Want to update?</source>
        <translation>Доступна новая версия. Обновить?</translation>
    </message>
    <message>
        <source>Yes</source>
        <translation>Да</translation>
    </message>
    <message>
        <source>No</source>
        <translation>Нет</translation>
    </message>
    <message>
        <source>Application is up-to-date</source>
        <translation>Установлена последняя версия программы</translation>
    </message>
</context>
</TS>
