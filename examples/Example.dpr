program Example;

uses
  Forms,
  Main in 'Main.pas' {MainForm},
  Settings in 'Settings.pas' {SettingsForm},
  DataMod in 'DataMod.pas' {DataModuleMain: TDataModule},
  Frame1 in 'Frame1.pas' {InfoFrame: TFrame},
  Utils in 'Utils.pas';

{$R *.res}

begin
  Application.Initialize;
  Application.Title := 'Пример проекта';
  Application.CreateForm(TMainForm, MainForm);
  Application.CreateForm(TDataModuleMain, DataModuleMain);
  Application.Run;
end.
