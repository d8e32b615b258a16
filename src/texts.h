#pragma once

/// Texts that the code sets or compares. Several of them are state, and some mix alphabets (the
/// first letter of "Cоединиться" is Latin), so they are defined only here. The form has its own
/// copies of connectPort and scan, in mainwindow.ui: if these differed, their buttons would do
/// nothing.
namespace text {

// Button texts. Each says what the next click does.
constexpr char connectPort[] = "Cоединиться";
constexpr char disconnectPort[] = "Отсоединиться";
constexpr char scan[] = "Сканировать";
constexpr char stopScan[] = "Стоп сканирования";
constexpr char apply[] = "Запись параметры";
constexpr char stopApply[] = "Остановить запись";

// Status bar.
constexpr char connected[] = "Connected";
constexpr char disconnected[] = "Disconnected";
constexpr char portDenied[] = "Порт отказано в доступе";

// Titles and texts of message boxes; %1 is the name of the module kind.
constexpr char accessDenied[] = "Отказано в доступе";
constexpr char criticalError[] = "Critical Error";
constexpr char connectionError[] = "Ошибка соединения";
constexpr char emptyDelivery[] = "нет соединения с модуля";
constexpr char noConnection[] = "нет соединения с модулем %1";
constexpr char error[] = "Ошибка";
constexpr char writeError[] = "<FONT COLOR='#800000'> Ошибка записи </FONT>";
constexpr char writeErrorWithoutLeadingSpace[] = "<FONT COLOR='#800000'>Ошибка записи </FONT>";
constexpr char writeResult[] = "Результы изменения";
constexpr char writeSucceeded[] =
    "<FONT COLOR='#008000'>Изменение параметров %1 было успешно</FONT>";
constexpr char factoryReset[] = "Сброс";
constexpr char confirmFactoryReset[] = "Вы действительно хотите cбросить к заводским настройкам?";
constexpr char yes[] = "Да";
constexpr char no[] = "Нет";
constexpr char noFileChosen[] = "Файл конфигурации не выбран";

// Main window and its menu.
constexpr char windowTitle[] = "Конфигуратор Modbus TCP-RTU";
constexpr char currentFile[] = "Текущий файл (%1)";

// File dialogs.
constexpr char settings[] = "Настройки";
// The first filter's trailing ";" alone would break it; with the next ";" it forms the separator
// ";;". The second filter also lists files saved without the extension.
constexpr char settingsFilter[] = "TCP_RTU settings (*.TRset);"
                                  ";Все файлы (*)";

} // namespace text

/// Style sheets that show the state of a parameter's field.
namespace mark {

constexpr char none[] = "";
constexpr char green[] = "background-color:  #90ee90;"; ///< value read, or write acknowledged
constexpr char red[] = "background-color: #FF2400"; ///< reply empty or unknown, or write refused
constexpr char lilac[] = "background-color:  #f5edff;";        ///< read-only, or switched off
constexpr char lilacFromFile[] = "background-color: #f5edff;"; ///< lilac, as a loaded file sets it

} // namespace mark

constexpr char windowIconPath[] = ":/images/KelvaneRTUTCP.ico";
