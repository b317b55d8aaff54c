object DataModuleMain: TDataModuleMain
  OldCreateOrder = False
  OnCreate = DataModuleCreate
  Left = 285
  Top = 161
  Height = 150
  Width = 215
  object AutoSaveTimer: TTimer
    Interval = 60000
    OnTimer = AutoSaveTimerTimer
    Left = 24
    Top = 16
  end
  object Images: TImageList
    Left = 96
    Top = 16
  end
end
