#pragma once

#include "module_parameters.h"

#include <QMainWindow>
#include <QSerialPort>

class QTimer;
class Ui_MainWindow;

/// The program's one window: the form, the serial link and the timed dialogue with the module.
///
/// Its files: mainwindow.cpp holds construction and the look of the form, mainwindow_port.cpp the
/// port, mainwindow_read.cpp and mainwindow_write.cpp the sequences, mainwindow_reply.cpp the
/// handling of replies, mainwindow_files.cpp the menu.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    /// The size until a module kind is chosen or a port is opened, in pixels.
    static constexpr QSize startSize{754, 550};

    explicit MainWindow(QWidget *parent = nullptr);
    ~MainWindow() override;

protected:
    bool event(QEvent *event) override;

private slots:
    void universal_show(int index);
    void on_scanport_clicked();
    void on_applyButton_clicked();
    void on_Reset_clicked();
    void on_scan_parameters_clicked();
    void readData();
    void openport();
    void closeport();
    void timerforScan();
    void Reset_Default();
    void change_mode_TCP();
    void scan_pa_modbus_RTU_TCP();
    void scan_pa_modbus_TCP_RTU();
    void scan_pa_modbus_all();
    void change_pa_modbus_RTU_TCP();
    void change_pa_modbus_TCP_RTU();
    void change_parametersofmodbus();
    void checkCustomDevicePathPolicy();
    void handleError(QSerialPort::SerialPortError error);
    void on_reset_allparameters_clicked();
    void on_checkBox_clicked(bool checked);
    void on_connect_clicked();
    void styleclear();
    void OnSaveSetting_File();
    void on_action_open_2_triggered();
    void on_action_show_triggered();
    void on_action_save_triggered();
    void on_action_triggered();

private:
    // mainwindow.cpp
    void createTimer(QTimer *&timer, const char *tickSlot);
    /// A read or a write. Its timer ticks once a second; its counter holds the next step.
    struct Sequence {
        static constexpr int tickMs = 1000;

        QTimer *timer;
        int &step;

        void start() const;
        void stop() const; ///< also zeroes the counter
    };
    Sequence readSequence(Dialect dialect);
    Sequence writeSequence(Dialect dialect);
    void stopAllSequences();
    std::optional<ModuleKind> selectedKind() const;
    QString nameOf(ModuleKind kind) const;
    QWidget *fieldOf(const Parameter &parameter) const;
    void setMark(const Parameter &parameter, const char *styleSheet);
    void clearMarksOfFixedKinds();

    // mainwindow_port.cpp
    void setConnectionControls(bool open);
    void watchForHangUp();
    bool isPortHungUp() const;
    void reportNoConnection(ModuleKind kind, const Sequence &sequence);

    // mainwindow_read.cpp
    void startRead(ModuleKind kind);
    void resetFields(ModuleKind kind);
    void readStepOnOpenPort(ModuleKind kind);
    void readStep(ModuleKind kind);
    void endRead(ModuleKind kind);

    // mainwindow_reply.cpp
    void reportEmptyDelivery();
    void handleQueryReply(ModuleKind kind);
    void showReply(const Parameter &parameter, Dialect dialect);
    void showSwitchableReply(const Parameter &parameter, const QString &value);
    void handleWriteReply(ModuleKind kind);
    void reportRefusal(const Parameter &parameter);

    // mainwindow_write.cpp
    void startWrite(ModuleKind kind);
    void writeStep(ModuleKind kind);
    void sendWriteCommand(const Parameter &parameter, Dialect dialect);
    QByteArray valueToWrite(const Parameter &parameter, Dialect dialect) const;
    void checkAcknowledgement(ModuleKind kind);
    void endWrite(ModuleKind kind);

    // mainwindow_files.cpp
    enum class Traces { First, All };
    void loadSettingsFile(Traces traces);

    Ui_MainWindow *ui;
    QSerialPort serial;
    QString replyText;
    QTimer *scanTimer = nullptr;
    QTimer *changeTimer = nullptr;
    QTimer *scanAllTimer = nullptr;
    QTimer *changeModeTimer = nullptr;
    int changeStep = 0;
    int scanAllStep = 0;
    int scanStep = 0;
    int changeModeStep = 0;
    bool restartExpected = false;
    QString settingsFileName;
    bool writeAcknowledged = false;
};
