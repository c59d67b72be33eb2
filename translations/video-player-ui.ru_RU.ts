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
    <message>
        <source>Burn in time, speed and position</source>
        <translation>Вписать время, скорость и координаты</translation>
    </message>
    <message>
        <source>The text is drawn into the pictures, so the cut is always re-encoded.</source>
        <translation>Текст рисуется на кадрах, поэтому фрагмент всегда перекодируется.</translation>
    </message>
    <message>
        <source>The folder %1 does not exist.</source>
        <translation>Папка %1 не существует.</translation>
    </message>
    <message>
        <source>%1 is on the card the recordings come from: nothing is written there.</source>
        <translation>%1 находится на карте с записями: туда ничего не записывается.</translation>
    </message>
    <message>
        <source>%1 is a folder.</source>
        <translation>%1 — это папка.</translation>
    </message>
    <message>
        <source>%1 cannot be written.</source>
        <translation>В %1 нельзя записать.</translation>
    </message>
    <message>
        <source>The folder %1 cannot be written to.</source>
        <translation>В папку %1 нельзя записывать.</translation>
    </message>
    <message>
        <source>%1 exists: Save asks before replacing it.</source>
        <translation>%1 уже есть: перед заменой будет задан вопрос.</translation>
    </message>
</context>
<context>
    <name>EvidenceFlow</name>
    <message>
        <source>Save evidence</source>
        <translation>Сохранить доказательства</translation>
    </message>
    <message>
        <source>Mark moment</source>
        <translation>Отметить момент</translation>
    </message>
    <message>
        <source>Moment marked: %1</source>
        <translation>Момент отмечен: %1</translation>
    </message>
    <message>
        <source>Save evidence to</source>
        <translation>Сохранить доказательства в</translation>
    </message>
    <message>
        <source>Saving evidence</source>
        <translation>Сохранение доказательств</translation>
    </message>
    <message>
        <source>The evidence pack is in %1</source>
        <translation>Пакет доказательств находится в %1</translation>
    </message>
    <message>
        <source>The evidence pack was not made.

%1</source>
        <translation>Пакет доказательств не создан.

%1</translation>
    </message>
</context>
<context>
    <name>EvidencePack</name>
    <message>
        <source>No folder was given for the evidence pack.</source>
        <translation>Не указана папка для пакета доказательств.</translation>
    </message>
    <message>
        <source>%1 already exists: an evidence pack always goes into a new folder.</source>
        <translation>%1 уже существует: пакет доказательств всегда создаётся в новой папке.</translation>
    </message>
    <message>
        <source>The folder %1 does not exist.</source>
        <translation>Папка %1 не существует.</translation>
    </message>
    <message>
        <source>%1 is on the card being read: choose a folder elsewhere.</source>
        <translation>%1 находится на читаемой карте: выберите папку в другом месте.</translation>
    </message>
    <message>
        <source>The interval of the evidence pack is empty.</source>
        <translation>Интервал пакета доказательств пуст.</translation>
    </message>
    <message>
        <source>The folder %1 can&apos;t be made.</source>
        <translation>Не удаётся создать папку %1.</translation>
    </message>
    <message>
        <source>The evidence pack failed: %1</source>
        <translation>Не удалось создать пакет доказательств: %1</translation>
    </message>
    <message>
        <source>The disk is full: the evidence pack does not fit into %1.</source>
        <translation>Диск заполнен: пакет доказательств не помещается в %1.</translation>
    </message>
    <message>
        <source>Nothing was recorded between %1 and %2.</source>
        <translation>Между %1 и %2 ничего не записано.</translation>
    </message>
    <message>
        <source>The disk is full: the evidence pack needs at least %1 MB in %2, and %3 MB are free.</source>
        <translation>Диск заполнен: пакету доказательств нужно не менее %1 МБ в %2, а свободно %3 МБ.</translation>
    </message>
    <message>
        <source>Can&apos;t read %1: %2</source>
        <translation>Не удаётся прочитать %1: %2</translation>
    </message>
    <message>
        <source>Can&apos;t write %1: %2</source>
        <translation>Не удаётся записать %1: %2</translation>
    </message>
    <message>
        <source>The copy %1 differs from its original %2.</source>
        <translation>Копия %1 отличается от оригинала %2.</translation>
    </message>
    <message>
        <source>The track could not be written as %1.</source>
        <translation>Не удалось записать трек как %1.</translation>
    </message>
    <message>
        <source>The front camera&apos;s clip could not be cut.</source>
        <translation>Не удалось вырезать фрагмент передней камеры.</translation>
    </message>
    <message>
        <source>The rear camera&apos;s clip could not be cut.</source>
        <translation>Не удалось вырезать фрагмент задней камеры.</translation>
    </message>
    <message>
        <source>The overview video could not be made.</source>
        <translation>Не удалось создать обзорное видео.</translation>
    </message>
    <message>
        <source>The report could not be written: %1</source>
        <translation>Не удалось записать отчёт: %1</translation>
    </message>
</context>
<context>
    <name>EvidenceReport</name>
    <message>
        <source>Incident evidence</source>
        <translation>Доказательства происшествия</translation>
    </message>
    <message>
        <source>Date</source>
        <translation>Дата</translation>
    </message>
    <message>
        <source>Time</source>
        <translation>Время</translation>
    </message>
    <message>
        <source>Place</source>
        <translation>Место</translation>
    </message>
    <message>
        <source>not given</source>
        <translation>не указано</translation>
    </message>
    <message>
        <source>Interval</source>
        <translation>Интервал</translation>
    </message>
    <message>
        <source>Interval (UTC)</source>
        <translation>Интервал (UTC)</translation>
    </message>
    <message>
        <source>Cameras</source>
        <translation>Камеры</translation>
    </message>
    <message>
        <source>Marked moments</source>
        <translation>Отмеченные моменты</translation>
    </message>
    <message>
        <source>none</source>
        <translation>нет</translation>
    </message>
    <message>
        <source>Made by %1 on %2 from %3.</source>
        <translation>Создано программой %1 %2 из %3.</translation>
    </message>
    <message>
        <source>GPS speed is indicative, not a calibrated measurement. The overview video and the pictures are derived from the recordings by this program; the files under &quot;originals&quot; are byte-identical copies of the card&apos;s files, and the clips are cut from them without re-encoding.</source>
        <translation>Скорость по GPS ориентировочная, это не поверенное измерение. Обзорное видео и снимки получены из записей этой программой; файлы в папке &quot;originals&quot; — побайтно идентичные копии файлов карты, а фрагменты вырезаны из них без перекодирования.</translation>
    </message>
    <message>
        <source>Map</source>
        <translation>Карта</translation>
    </message>
    <message>
        <source>Speed, %1</source>
        <translation>Скорость, %1</translation>
    </message>
    <message>
        <source>No GPS track for this interval.</source>
        <translation>Для этого интервала нет трека GPS.</translation>
    </message>
    <message>
        <source>Track around the marked moments</source>
        <translation>Трек вокруг отмеченных моментов</translation>
    </message>
    <message>
        <source>No moments were marked.</source>
        <translation>Моменты не отмечены.</translation>
    </message>
    <message>
        <source>Moment %1: %2</source>
        <translation>Момент %1: %2</translation>
    </message>
    <message>
        <source>no GPS fix</source>
        <translation>нет GPS</translation>
    </message>
    <message>
        <source>Files</source>
        <translation>Файлы</translation>
    </message>
    <message>
        <source>SHA-256 checksums let anyone check that a file is unchanged (e.g. with sha256sum).</source>
        <translation>Контрольные суммы SHA-256 позволяют любому проверить, что файл не изменён (например, программой sha256sum).</translation>
    </message>
    <message>
        <source>original: byte-identical copy</source>
        <translation>оригинал: побайтно идентичная копия</translation>
    </message>
    <message>
        <source>clip: the camera&apos;s pictures, cut without re-encoding</source>
        <translation>фрагмент: изображение камеры, вырезанное без перекодирования</translation>
    </message>
    <message>
        <source>derived: made by this program, not original</source>
        <translation>производный: создан этой программой, не оригинал</translation>
    </message>
    <message>
        <source>%1 bytes, %2</source>
        <translation>%1 байт, %2</translation>
    </message>
    <message>
        <source>Latitude</source>
        <translation>Широта</translation>
    </message>
    <message>
        <source>Longitude</source>
        <translation>Долгота</translation>
    </message>
    <message>
        <source>Heading</source>
        <translation>Курс</translation>
    </message>
</context>
<context>
    <name>ExportController</name>
    <message>
        <source>Save video</source>
        <translation>Сохранить видео</translation>
    </message>
    <message>
        <source>Save video and track</source>
        <translation>Сохранить видео и трек</translation>
    </message>
    <message>
        <source>Save track</source>
        <translation>Сохранить трек</translation>
    </message>
    <message>
        <source>Save to</source>
        <translation>Сохранить как</translation>
    </message>
    <message>
        <source>Saving</source>
        <translation>Сохранение</translation>
    </message>
    <message>
        <source>The folder already holds files of the same names:
%1

Choose another folder.</source>
        <translation>В папке уже есть файлы с такими именами:
%1

Выберите другую папку.</translation>
    </message>
    <message>
        <source>Copying status</source>
        <translation>Копирование файлов</translation>
    </message>
    <message>
        <source>Encoding status</source>
        <translation>Кодирование видео</translation>
    </message>
    <message>
        <source>Encoding</source>
        <translation>Кодирование</translation>
    </message>
    <message>
        <source>Failed to copy track</source>
        <translation>Не удалось скопировать трек</translation>
    </message>
    <message>
        <source>Сopying completed</source>
        <translation>Копирование завершено</translation>
    </message>
    <message>
        <source>Failed to copy</source>
        <translation>Не удалось скопировать</translation>
    </message>
    <message>
        <source>Encoding completed</source>
        <translation>Кодирование завершено</translation>
    </message>
    <message>
        <source>Failed to encode.

NOTE:
Try choose another container type or choose &quot;Only video&quot; option.
If all else fails choose &quot;Force reencoding&quot;.</source>
        <translation>Не удалось закодировать видео.

ПРИМЕЧАНИЕ:
Попробуйте выбрать другой тип контейнера или параметр «Только видео».
Если это не поможет, выберите «Принудительное перекодирование».</translation>
    </message>
    <message>
        <source>Track saving</source>
        <translation>Сохранение трека</translation>
    </message>
    <message>
        <source>Track saving completed</source>
        <translation>Трек сохранён</translation>
    </message>
    <message>
        <source>Failed to save track</source>
        <translation>Не удалось сохранить трек</translation>
    </message>
    <message>
        <source>Copies cannot go onto the card they come from.

Choose another folder.</source>
        <translation>Копии нельзя сохранять на ту же карту, с которой они взяты.

Выберите другую папку.</translation>
    </message>
    <message>
        <source>%1 already exists.
Do you want to replace it?</source>
        <translation>%1 уже существует.
Заменить его?</translation>
    </message>
    <message>
        <source>Only %1 s of the %2 s asked were written: the recordings end early or could not be read.</source>
        <translation>Записано только %1 с из запрошенных %2 с: записи заканчиваются раньше или не читаются.</translation>
    </message>
    <message>
        <source>Failed to encode.</source>
        <translation>Не удалось закодировать.</translation>
    </message>
    <message>
        <source>Rear</source>
        <translation>Задняя</translation>
    </message>
    <message>
        <source>Front</source>
        <translation>Передняя</translation>
    </message>
    <message>
        <source>Show in folder</source>
        <translation>Показать в папке</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
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
        <source>Lumicor Reelvue</source>
        <translation>Lumicor Reelvue</translation>
    </message>
    <message>
        <source>Open directory</source>
        <translation>Открыть папку</translation>
    </message>
    <message>
        <source>Open file</source>
        <translation>Открыть файл</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Сохранить</translation>
    </message>
    <message>
        <source>RIDES</source>
        <translation>ПОЕЗДКИ</translation>
    </message>
    <message>
        <source>PARKING</source>
        <translation>ПАРКОВКА</translation>
    </message>
    <message>
        <source>EVENTS</source>
        <translation>СОБЫТИЯ</translation>
    </message>
    <message>
        <source>FILES</source>
        <translation>ФАЙЛЫ</translation>
    </message>
    <message>
        <source>Unmute</source>
        <translation>Включить звук</translation>
    </message>
    <message>
        <source>Mute</source>
        <translation>Выключить звук</translation>
    </message>
    <message>
        <source>Volume</source>
        <translation>Громкость</translation>
    </message>
    <message>
        <source>Show fullscreen</source>
        <translation>Во весь экран</translation>
    </message>
    <message>
        <source>Show normal (not fullscreen)</source>
        <translation>Выйти из полноэкранного режима</translation>
    </message>
    <message>
        <source>Seek to the beginning</source>
        <translation>Перейти в начало</translation>
    </message>
    <message>
        <source>Slow down</source>
        <translation>Медленнее</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>Стоп</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>Воспроизвести</translation>
    </message>
    <message>
        <source>Pause</source>
        <translation>Пауза</translation>
    </message>
    <message>
        <source>Speed up</source>
        <translation>Быстрее</translation>
    </message>
    <message>
        <source>Seek to the ending</source>
        <translation>Перейти в конец</translation>
    </message>
    <message>
        <source>Start cycle play</source>
        <translation>Включить повтор фрагмента</translation>
    </message>
    <message>
        <source>Stop cycle play</source>
        <translation>Выключить повтор фрагмента</translation>
    </message>
    <message>
        <source>Cut and save</source>
        <translation>Вырезать и сохранить</translation>
    </message>
    <message>
        <source>Rotate</source>
        <translation>Повернуть</translation>
    </message>
    <message>
        <source>Confirm cut</source>
        <translation>Подтвердить вырезание</translation>
    </message>
    <message>
        <source>Reject cut</source>
        <translation>Отменить вырезание</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;Вид</translation>
    </message>
    <message>
        <source>Show video</source>
        <translation>Показать видео</translation>
    </message>
    <message>
        <source>Rotate video</source>
        <translation>Повернуть видео</translation>
    </message>
    <message>
        <source>Time stamps on track</source>
        <translation>Метки времени на треке</translation>
    </message>
    <message>
        <source>Charts</source>
        <translation>Графики</translation>
    </message>
    <message>
        <source>Language</source>
        <translation>Язык</translation>
    </message>
    <message>
        <source>Ctrl+O</source>
        <translation>Ctrl+O</translation>
    </message>
    <message>
        <source>About</source>
        <translation>О программе</translation>
    </message>
    <message>
        <source>Main camera</source>
        <translation>Основная камера</translation>
    </message>
    <message>
        <source>Rear camera</source>
        <translation>Задняя камера</translation>
    </message>
    <message>
        <source>Disabled</source>
        <translation>Отключены</translation>
    </message>
    <message>
        <source>30 seconds</source>
        <translation>30 секунд</translation>
    </message>
    <message>
        <source>1 minute</source>
        <translation>1 минута</translation>
    </message>
    <message>
        <source>5 minutes</source>
        <translation>5 минут</translation>
    </message>
    <message>
        <source>20 minutes</source>
        <translation>20 минут</translation>
    </message>
    <message>
        <source>Speed</source>
        <translation>Скорость</translation>
    </message>
    <message>
        <source>Altitude</source>
        <translation>Высота</translation>
    </message>
    <message>
        <source>Number of satellites</source>
        <translation>Число спутников</translation>
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
        <translation>Версия %1</translation>
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
    <message>
        <source>No map tiles available here: connect to the network or add an offline map (View menu)</source>
        <translation>Здесь нет фрагментов карты: подключитесь к сети или добавьте офлайн-карту (меню «Вид»)</translation>
    </message>
</context>
<context>
    <name>MbtilesSource</name>
    <message>
        <source>The file cannot be read: %1</source>
        <translation>Файл не удаётся прочитать: %1</translation>
    </message>
    <message>
        <source>The file is empty.</source>
        <translation>Файл пуст.</translation>
    </message>
    <message>
        <source>The file is not an MBTiles map (it is not an SQLite database).</source>
        <translation>Файл не является картой MBTiles (это не база данных SQLite).</translation>
    </message>
    <message>
        <source>The file cannot be opened: %1</source>
        <translation>Файл не удаётся открыть: %1</translation>
    </message>
    <message>
        <source>The file holds vector tiles; only maps of pictures (PNG, JPEG, WebP) can be shown.</source>
        <translation>Файл содержит векторные фрагменты; показать можно только растровые карты (PNG, JPEG, WebP).</translation>
    </message>
    <message>
        <source>The file has no map tiles (%1).</source>
        <translation>В файле нет фрагментов карты (%1).</translation>
    </message>
    <message>
        <source>The file is damaged: %1</source>
        <translation>Файл повреждён: %1</translation>
    </message>
    <message>
        <source>The file holds no map tiles.</source>
        <translation>Файл не содержит фрагментов карты.</translation>
    </message>
    <message>
        <source>The file&apos;s tiles are not PNG, JPEG or WebP pictures.</source>
        <translation>Фрагменты карты в файле не являются изображениями PNG, JPEG или WebP.</translation>
    </message>
</context>
<context>
    <name>OfflineMaps</name>
    <message>
        <source>Add offline map...</source>
        <translation>Добавить офлайн-карту...</translation>
    </message>
    <message>
        <source>Offline maps</source>
        <translation>Офлайн-карты</translation>
    </message>
    <message>
        <source>Add offline map</source>
        <translation>Добавить офлайн-карту</translation>
    </message>
    <message>
        <source>MBTiles maps (*.mbtiles)</source>
        <translation>Карты MBTiles (*.mbtiles)</translation>
    </message>
    <message>
        <source>%1 cannot be used as an offline map: %2</source>
        <translation>%1 нельзя использовать как офлайн-карту: %2</translation>
    </message>
    <message>
        <source>Offline map</source>
        <translation>Офлайн-карта</translation>
    </message>
    <message>
        <source>Forget offline maps</source>
        <translation>Забыть офлайн-карты</translation>
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
    <name>OverviewVideo</name>
    <message>
        <source>no GPS fix</source>
        <translation>нет GPS</translation>
    </message>
</context>
<context>
    <name>PictureSaver</name>
    <message>
        <source>Save video frame</source>
        <translation>Сохранить кадр</translation>
    </message>
    <message>
        <source>Save video frame (main camera)</source>
        <translation>Сохранить кадр (основная камера)</translation>
    </message>
    <message>
        <source>Save video frame (rear camera)</source>
        <translation>Сохранить кадр (задняя камера)</translation>
    </message>
    <message>
        <source>Save window</source>
        <translation>Сохранить снимок окна</translation>
    </message>
    <message>
        <source>Save image to</source>
        <translation>Сохранить изображение как</translation>
    </message>
    <message>
        <source>JPEG (*.jpg);;PNG (*.png)</source>
        <translation>Изображение JPEG (*.jpg);;Изображение PNG (*.png)</translation>
    </message>
    <message>
        <source>Specified file path is not suitable</source>
        <translation>Указанный путь к файлу не подходит</translation>
    </message>
</context>
<context>
    <name>PlaybackController</name>
    <message>
        <source>%1 cannot be played and is skipped. %2</source>
        <translation>%1 не воспроизводится и пропущен. %2</translation>
    </message>
</context>
<context>
    <name>PlaybackSession</name>
    <message>
        <source>Open a memory card, a folder or a video file</source>
        <translation>Откройте карту памяти, папку или видеофайл</translation>
    </message>
    <message>
        <source>Active camera(s) is(are) not available.</source>
        <translation>Выбранные камеры недоступны.</translation>
    </message>
</context>
<context>
    <name>Playlist</name>
    <message>
        <source>The recording has lost its index (the camera lost power before it closed the file), so it cannot be played.</source>
        <translation>Запись потеряла индекс (камера потеряла питание, не успев закрыть файл), поэтому её нельзя воспроизвести.</translation>
    </message>
    <message>
        <source>The recording cannot be read as a video: %1</source>
        <translation>Запись не читается как видео: %1</translation>
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
        <translation>Путь</translation>
    </message>
    <message>
        <source>Top speed</source>
        <translation>Макс. скорость</translation>
    </message>
    <message>
        <source>File</source>
        <translation>Файл</translation>
    </message>
    <message>
        <source>Recordings that cannot be played and are skipped:</source>
        <translation>Записи, которые нельзя воспроизвести, пропускаются:</translation>
    </message>
    <message>
        <source>Time from the file name</source>
        <translation>Время взято из имени файла</translation>
    </message>
    <message>
        <source>Time from the GPS track</source>
        <translation>Время взято из GPS-трека</translation>
    </message>
    <message>
        <source>Time from the GPS track, counted back from its first fix to the start of the recording</source>
        <translation>Время взято из GPS-трека и отсчитано назад от первой точки до начала записи</translation>
    </message>
    <message>
        <source>Time unknown: placed right after the recording before it</source>
        <translation>Время неизвестно: запись поставлена сразу после предыдущей</translation>
    </message>
    <message>
        <source>Time unknown: placed right before the recording after it</source>
        <translation>Время неизвестно: запись поставлена сразу перед следующей</translation>
    </message>
    <message>
        <source>Time from the creation time stored in the video</source>
        <translation>Время взято из времени создания, записанного в видео</translation>
    </message>
    <message>
        <source>Time from the file&apos;s modification time, less the length of the recording</source>
        <translation>Время изменения файла за вычетом длительности записи</translation>
    </message>
</context>
<context>
    <name>PlaylistPane</name>
    <message>
        <source>Open directory</source>
        <translation>Открыть папку</translation>
    </message>
    <message>
        <source>Open file</source>
        <translation>Открыть файл</translation>
    </message>
    <message>
        <source>MP4, MOV(*.mp4 *.mov);;MP4(*.mp4);;MOV(*.mov)</source>
        <translation>Видео MP4, MOV (*.mp4 *.mov);;MP4 (*.mp4);;MOV (*.mov)</translation>
    </message>
    <message>
        <source>Loading from directory status</source>
        <translation>Загрузка записей</translation>
    </message>
    <message>
        <source>Failed to load</source>
        <translation>Не удалось загрузить</translation>
    </message>
    <message>
        <source>In the path specified there are no video files and the nested subfolder structure is missing or incorrect</source>
        <translation>По указанному пути нет видеофайлов, а структура вложенных папок отсутствует или неверна</translation>
    </message>
    <message>
        <source>None of the videos found could be dated: their names give no recording time and no GPS track gives one</source>
        <translation>Ни одно из найденных видео не удалось датировать: их имена не содержат времени записи, и ни один GPS-трек его не даёт</translation>
    </message>
</context>
<context>
    <name>PlaylistView</name>
    <message>
        <source>Open a memory card, a folder or a video file, or drop one here</source>
        <translation>Откройте карту памяти, папку или видеофайл либо перетащите их сюда</translation>
    </message>
    <message>
        <source>Nothing in this list</source>
        <translation>Список пуст</translation>
    </message>
    <message>
        <source>Repair…</source>
        <translation>Восстановить…</translation>
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
    <name>RepairFlow</name>
    <message>
        <source>Repair</source>
        <translation>Восстановление записи</translation>
    </message>
    <message>
        <source>No playable recording of the same camera lies beside this one, so its pictures cannot be recovered.</source>
        <translation>Рядом нет исправной записи той же камеры, поэтому кадры этой записи восстановить нельзя.</translation>
    </message>
    <message>
        <source>Save repaired recording to</source>
        <translation>Сохранить восстановленную запись в</translation>
    </message>
    <message>
        <source>Repairing</source>
        <translation>Восстановление</translation>
    </message>
    <message>
        <source>The pictures were recovered into %1 (without sound).</source>
        <translation>Кадры восстановлены в %1 (без звука).</translation>
    </message>
    <message>
        <source>Failed to repair: %1</source>
        <translation>Не удалось восстановить: %1</translation>
    </message>
</context>
<context>
    <name>StorageOpener</name>
    <message>
        <source>The storage %1 with the loaded recordings was removed.</source>
        <translation>Накопитель %1 с открытыми записями был извлечён.</translation>
    </message>
</context>
<context>
    <name>TrackAttacher</name>
    <message>
        <source>Attach track...</source>
        <translation>Прикрепить трек...</translation>
    </message>
    <message>
        <source>Detach track</source>
        <translation>Открепить трек</translation>
    </message>
    <message>
        <source>Track offset:</source>
        <translation>Сдвиг трека:</translation>
    </message>
    <message>
        <source> s</source>
        <translation> с</translation>
    </message>
    <message>
        <source>Seconds added to the times of the attached track: when its positions come too early on the video, make the offset larger</source>
        <translation>Секунды, добавляемые ко времени прикреплённого трека: если его позиции появляются на видео слишком рано, увеличьте сдвиг</translation>
    </message>
    <message>
        <source>Attach track</source>
        <translation>Прикрепить трек</translation>
    </message>
    <message>
        <source>Tracks (*.gpx *.kml *.nmea *.nma *.txt *.log);;All files (*)</source>
        <translation>Треки (*.gpx *.kml *.nmea *.nma *.txt *.log);;Все файлы (*)</translation>
    </message>
    <message>
        <source>Reading track status</source>
        <translation>Статус чтения трека</translation>
    </message>
    <message>
        <source>%1 could not be read as a GPX, KML or NMEA track with times</source>
        <translation>%1 не удалось прочитать как трек GPX, KML или NMEA со временем</translation>
    </message>
</context>
<context>
    <name>TrackPlot</name>
    <message>
        <source>Speed, km/h</source>
        <translation>Скорость, км/ч</translation>
    </message>
    <message>
        <source>Altitude, m</source>
        <translation>Высота, м</translation>
    </message>
    <message>
        <source>Satellites</source>
        <translation>Спутники</translation>
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
        <translation>Нет данных</translation>
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
