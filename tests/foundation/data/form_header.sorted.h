	bool __fastcall CanClose(void);
	TButton *OKButton;
	TEdit *NameEdit;
	TLabel *CaptionLabel;
	void __fastcall FormCreate(TObject *Sender);
	void __fastcall OKButtonClick(TObject *Sender);
	void __fastcall WndProc(Messages::TMessage &Message,
		int Extra);
