object PersianForm: TPersianForm
  Left = 200
  Top = 120
  Width = 360
  Height = 200
  Caption = #1578#1606#1592#1740#1605#1575#1578
  Color = clBtnFace
  Font.Charset = ARABIC_CHARSET
  Font.Color = clWindowText
  Font.Height = -11
  Font.Name = 'MS Sans Serif'
  Font.Style = []
  OldCreateOrder = False
  PixelsPerInch = 96
  TextHeight = 13
  object FileLabel: TLabel
    Left = 8
    Top = 8
    Width = 60
    Height = 13
    Caption = 'Å—Ê‰œÂ'
  end
  object PrintButton: TButton
    Left = 8
    Top = 30
    Width = 75
    Height = 25
    Caption = 'ç«Å'
    TabOrder = 0
  end
  object MenuButton: TSpeedButton
    Left = 96
    Top = 30
    Width = 25
    Height = 25
    Caption = #8801
  end
  object PlayButton: TSpeedButton
    Left = 128
    Top = 30
    Width = 25
    Height = 25
    Caption = #9658
  end
end
